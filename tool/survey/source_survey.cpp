#include "tool/survey/source_survey.h"

#include <algorithm>
#include <map>
#include <memory>
#include <string_view>
#include <utility>

#include "tool/io/watched_file.h"
#include "tool/sources/json/json_lines_reader.h"

namespace tool {

namespace {

// An address with those below it.
struct Node {
    AddressSurvey survey;
    std::uint64_t lastRow = 0;  // in which it had a value
    std::map<std::string, std::unique_ptr<Node>, std::less<>> members;
    std::unique_ptr<Node> elements;
    std::vector<Node*> order;  // of all of these
};

// Takes the rows of a group's files, one file after the other.
class RowGatherer final : public RowHandler {
  public:
    RowGatherer(SourceSurvey& survey, ValueSpool& spool) : m_survey(survey), m_spool(spool) {}

    void BeginFile(const std::string& name) {
        m_place.file = name;
        m_columns.clear();
    }

    void TakeHeader(const std::vector<std::string>& columns) override {
        std::map<std::string_view, std::size_t> repeats;
        for (std::size_t i = 0; i < columns.size(); ++i) {
            const bool isRepeated = std::count(columns.begin(), columns.end(), columns[i]) > 1;
            // Members of the tree cannot be told apart by one name, so the repeats get a longer
            // one.
            const std::size_t repeat = repeats[columns[i]]++;
            const std::string key = columns[i] + std::string(repeat, '\n');
            Node* const node = MemberOf(m_root, key, columns[i]);
            if (node != nullptr && (isRepeated || columns[i].empty() || columns[i] == ".")) {
                node->survey.column = i;
            }
            m_columns.push_back(node);
        }
    }

    bool TakeRow(Row& row) override {
        m_place.row = row.number;
        m_place.line = row.line;
        m_survey.nuls += row.nuls;
        if (row.repeated > 0) {
            m_survey.repeatedMembers += row.repeated;
            m_survey.repeatedName = row.repeatedName;
        }
        if (!row.error.empty()) {
            TakeBadRow(row);
            return true;
        }
        ++m_survey.rows;
        if (m_columns.empty()) {
            Visit(row.tree, RowTree::kRoot, m_root);
            return true;
        }
        std::size_t column = 0;
        for (auto cell = row.tree.FirstChild(RowTree::kRoot);
             cell != RowTree::kNone && column < m_columns.size();
             cell = row.tree.Next(cell), ++column) {
            if (m_columns[column] != nullptr) {
                Visit(row.tree, cell, *m_columns[column]);
            }
        }
        return true;
    }

    void TakeOutside(const std::string& address, std::uint64_t /*line*/) override {
        auto& outside = m_survey.outside;
        const auto known =
            std::find_if(outside.begin(), outside.end(),
                         [&](const SourceSurvey::Outside& one) { return one.address == address; });
        if (known != outside.end()) {
            ++known->values;
        } else if (outside.size() < SourceSurvey::kMaxAddresses) {
            outside.push_back({address, 1});
        } else {
            ++m_survey.valuesBeyond;
        }
    }

    void Finish() {
        if (m_root.survey.Values() > 0) {
            m_survey.addresses.push_back(std::move(m_root.survey));
        }
        Collect(m_root);
    }

  private:
    void TakeBadRow(const Row& row) {
        ++m_survey.badRows;
        m_survey.endsEarly |= row.isLast;
        if (m_survey.shownBadRows.size() < SourceSurvey::kShownBadRows) {
            m_survey.shownBadRows.push_back({m_place, row.error});
        }
    }

    void Visit(const RowTree& tree, RowTree::Index value, Node& node) {
        AddressSurvey& survey = node.survey;
        const RowTree::Kind kind = tree.KindOf(value);
        const bool isScalar = tree.IsScalar(value);
        const std::string_view text = isScalar ? tree.Text(value) : std::string_view();
        if (!isScalar || !text.empty()) {
            if (survey.rows == 0) {
                survey.first = m_place;
            }
            survey.rows += node.lastRow != m_survey.rows ? 1 : 0;
            node.lastRow = m_survey.rows;
        }
        if (isScalar) {
            survey.Add(kind, text, m_spool);
            return;
        }
        ++(kind == RowTree::Kind::Object ? survey.objects : survey.lists);
        for (auto child = tree.FirstChild(value); child != RowTree::kNone;
             child = tree.Next(child)) {
            Node* const below = kind == RowTree::Kind::Object
                                    ? MemberOf(node, tree.Name(child), tree.Name(child))
                                    : ElementsOf(node);
            if (below != nullptr) {
                Visit(tree, child, *below);
            } else {
                ++m_survey.valuesBeyond;
            }
        }
    }

    // Null when there are too many addresses.
    Node* MemberOf(Node& node, std::string_view key, std::string_view name) {
        if (const auto found = node.members.find(key); found != node.members.end()) {
            return found->second.get();
        }
        std::unique_ptr<Node> made = Make(node, name, false);
        return made ? Keep(node, *(node.members[std::string(key)] = std::move(made))) : nullptr;
    }

    Node* ElementsOf(Node& node) {
        if (!node.elements) {
            node.elements = Make(node, "*", true);
            return node.elements ? Keep(node, *node.elements) : nullptr;
        }
        return node.elements.get();
    }

    static Node* Keep(Node& node, Node& child) {
        node.order.push_back(&child);
        return &child;
    }

    std::unique_ptr<Node> Make(const Node& parent, std::string_view name, bool isElement) {
        if (m_count == SourceSurvey::kMaxAddresses) {
            return nullptr;
        }
        ++m_count;
        auto made = std::make_unique<Node>();
        made->survey.steps = parent.survey.steps;
        made->survey.steps.emplace_back(name);
        made->survey.isElement = parent.survey.isElement;
        made->survey.isElement.push_back(isElement);
        return made;
    }

    void Collect(Node& node) {
        for (Node* const child : node.order) {
            m_survey.addresses.push_back(std::move(child->survey));
            Collect(*child);
        }
    }

    SourceSurvey& m_survey;
    ValueSpool& m_spool;
    SurveyPlace m_place;
    Node m_root;
    std::vector<Node*> m_columns;  // of a CSV file; null for those that were too many
    std::size_t m_count = 0;
};

}  // namespace

std::unique_ptr<RowFileReader> OpenRows(ByteSource& bytes, const SourceSurvey& survey) {
    switch (survey.group.format) {
        case MapFormat::Csv:
            return std::make_unique<CsvReader>(bytes, survey.guess.csv);
        case MapFormat::JsonLines:
            return std::make_unique<JsonLinesReader>(bytes);
        default:
            return std::make_unique<JsonReader>(bytes, survey.guess.rows);
    }
}

SourceSurvey SurveySource(const SurveyGroup& group, const SurveyOptions& options,
                          ValueSpool& spool) {
    SourceSurvey survey;
    survey.group = group;
    survey.guess = GuessSource(group, options);
    RowGatherer gatherer(survey, spool);
    for (const SurveyFile& file : group.files) {
        WatchedFile bytes(file.path, file.name);
        gatherer.BeginFile(file.name);
        OpenRows(bytes, survey)->Read(gatherer);
    }
    gatherer.Finish();
    return survey;
}

}  // namespace tool
