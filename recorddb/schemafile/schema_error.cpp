#include <utility>

#include "recorddb/errors.h"

namespace recorddb::schema {

namespace {

std::string FullText(const std::string& file, int line, int column, const std::string& text) {
    std::string full = file;
    if (line > 0) {
        full += ':' + std::to_string(line) + ':' + std::to_string(column);
    }
    return full + ": " + text;
}

}  // namespace

SchemaError::SchemaError(std::string file, int line, int column, std::string text)
    : std::runtime_error(FullText(file, line, column, text)),
      m_file(std::move(file)),
      m_line(line),
      m_column(column),
      m_text(std::move(text)) {}

}  // namespace recorddb::schema
