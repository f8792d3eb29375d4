#ifndef TOOL_SURVEY_DATE_GUESS_H
#define TOOL_SURVEY_DATE_GUESS_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tool {

// Finds out whether texts are dates, and in which format. Stops looking where they are not, so that
// it costs next to nothing then.
class DateGuess {
  public:
    DateGuess();
    ~DateGuess();
    DateGuess(DateGuess&&) noexcept;
    DateGuess& operator=(DateGuess&&) noexcept;

    void Add(std::string_view text);

    // How many texts were dates in the format that most of them have, and how many came.
    std::uint64_t Dates() const;
    std::uint64_t Texts() const { return m_texts; }

    // Whether all are dates in one format.
    bool AreDates() const { return m_texts > 0 && Dates() == m_texts; }

    // The formats that most of the texts fit: several when they leave open which number is the day.
    // An empty one is ISO 8601, which needs none.
    std::vector<std::string> Formats() const;

    // A text that is no date, while most are.
    const std::string& Exception() const { return m_exception; }

    // Whether one names a time of day and no time zone.
    bool LacksZone() const { return m_lacksZone; }

  private:
    struct Candidate;

    std::vector<Candidate> m_candidates;
    std::uint64_t m_texts = 0;
    bool m_gaveUp = false;
    bool m_lacksZone = false;
    std::string m_exception;
};

}  // namespace tool

#endif
