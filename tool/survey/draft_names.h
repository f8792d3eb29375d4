#ifndef TOOL_SURVEY_DRAFT_NAMES_H
#define TOOL_SURVEY_DRAFT_NAMES_H

#include <cstddef>
#include <set>
#include <string>
#include <string_view>

namespace tool {

// `text` as a name that a schema file accepts: lower-case ASCII letters, digits and "_", at most
// `limit` of them. Letters of other scripts are written in Latin ones.
std::string NameFor(std::string_view text, std::size_t limit);

// Names of one place that must differ.
class DraftNames {
  public:
    static constexpr std::size_t kTypeLimit = 30;
    static constexpr std::size_t kFieldLimit = 60;

    explicit DraftNames(std::size_t limit) : m_limit(limit) {}

    // Keeps a name for something else.
    void Reserve(const std::string& name) { m_taken.insert(name); }
    // A name for `text` that none had before.
    std::string Take(std::string_view text);

  private:
    std::size_t m_limit;
    std::set<std::string> m_taken;
};

// A scalar of YAML: plain where that is safe, else in double quotes.
std::string YamlText(std::string_view text);

}  // namespace tool

#endif
