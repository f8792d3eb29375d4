#include "tool/rejects/rejected_rows_sink.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace tool {

namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

std::filesystem::path WithWord(const std::filesystem::path& path, const std::string& word) {
    return path.parent_path() / (path.stem().string() + "." + word + path.extension().string());
}

// A JSON value on one line: a blank for each line break with the indentation behind it. A line
// break cannot stand in a text of JSON.
std::string OnOneLine(std::string_view json) {
    std::string line;
    while (!json.empty()) {
        const std::size_t end = std::min(json.find_first_of("\r\n"), json.size());
        line += json.substr(0, end);
        json.remove_prefix(end);
        if (!json.empty()) {
            line += ' ';
            json.remove_prefix(std::min(json.find_first_not_of(" \t\r\n"), json.size()));
        }
    }
    return line;
}

}  // namespace

std::filesystem::path RejectedRowsPath(const std::filesystem::path& path, const std::string& source,
                                       std::size_t sources) {
    return sources == 1 ? path : WithWord(path, source);
}

RejectedRowsSink::RejectedRowsSink(const std::filesystem::path& path,
                                   std::shared_ptr<KeptRows> rows)
    : m_path(path), m_rows(std::move(rows)) {
    for (const KeptRows::File& file : m_rows->files) {
        const bool isNew =
            std::none_of(m_outputs.begin(), m_outputs.end(),
                         [&](const Output& output) { return output.source == file.source; });
        if (isNew) {
            OutputFor(file);
        }
    }
}

// Another source may have the name that this one gets with a number behind it.
bool RejectedRowsSink::IsTaken(const std::filesystem::path& path) const {
    return std::any_of(m_outputs.begin(), m_outputs.end(),
                       [&](const Output& output) { return output.path == path; });
}

RejectedRowsSink::Output& RejectedRowsSink::OutputFor(const KeptRows::File& file) {
    std::size_t number = 1;
    for (Output& output : m_outputs) {
        if (output.source == file.source && output.header == file.header) {
            return output;
        }
        number += output.source == file.source ? 1 : 0;
    }
    std::filesystem::path path =
        RejectedRowsPath(m_path, m_rows->sources[file.source], m_rows->sources.size());
    if (number > 1) {
        const std::filesystem::path first = path;
        do {
            path = WithWord(first, std::to_string(number++));
        } while (IsTaken(path));
        if (std::filesystem::exists(path)) {
            throw std::system_error(std::make_error_code(std::errc::file_exists),
                                    path.string() +
                                        ": rejected rows go to a new file of this "
                                        "name; move it away");
        }
    }
    Output& output = m_outputs.emplace_back(file.source, file.header, path);
    if (file.needsMark) {
        output.file.Append(kUtf8Mark);
    }
    if (!file.header.empty()) {
        output.file.Append(file.header + '\n');
    }
    return output;
}

void RejectedRowsSink::Rejects(const RejectedRecord& record) {
    for (const RowSpan& row : record.rows) {
        if (row.size > 0 && m_written.insert(row.begin).second) {
            const KeptRows::File& file = m_rows->files[row.file];
            const std::string text = m_rows->texts.Read(row.begin, row.size);
            OutputFor(file).file.Append((file.isJson ? OnOneLine(text) : text) + '\n');
        }
    }
}

void RejectedRowsSink::Finish(const LoadTotals& /*totals*/) {
    for (Output& output : m_outputs) {
        output.file.Finish();
    }
}

}  // namespace tool
