#ifndef TOOL_SURVEY_ADDRESS_SURVEY_H
#define TOOL_SURVEY_ADDRESS_SURVEY_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tool/sources/rows/row_tree.h"
#include "tool/survey/date_guess.h"
#include "tool/survey/value_counts.h"
#include "tool/survey/value_spool.h"

namespace tool {

// Where something stands.
struct SurveyPlace {
    std::string file;
    std::uint64_t row = 0;
    std::uint64_t line = 0;
};

// What stands at one address of the rows of a source: a column, or a way to JSON values.
struct AddressSurvey {
    std::vector<std::string> steps;     // from the row on; "*" is any element of an array
    std::vector<bool> isElement;        // of each step: it is an element, not a member called "*"
    std::optional<std::size_t> column;  // the place of a column, from 0, whose name is not enough

    std::uint64_t rows =
        0;  // with a value that is neither null nor empty, or with what holds others
    std::uint64_t texts = 0;
    std::uint64_t numbers = 0;
    std::uint64_t words = 0;  // true and false
    std::uint64_t nulls = 0;
    std::uint64_t empties = 0;  // texts
    std::uint64_t objects = 0;
    std::uint64_t lists = 0;
    SurveyPlace first;  // of the first value

    std::size_t longest = 0;            // in characters
    std::uint64_t integers = 0;         // that would be written just so
    std::uint64_t severalLines = 0;     // texts with line ends
    std::uint64_t carriageReturns = 0;  // texts with one
    std::uint64_t forbidden = 0;        // texts with a character that XML forbids
    std::uint64_t outerBlanks = 0;      // texts with blanks at an end
    std::uint64_t commas = 0;           // texts with one
    DateGuess dates;
    ValueCounts values;
    std::uint64_t repeats = 0;  // values that came before, as far as they were told apart
    // In the spool, when there are too many different values to know them all.
    std::optional<ValueSpool::Column> spooled;
    bool isNoKey = false;  // values repeat too much
    // How many different values there are, as far as that is known.
    std::optional<std::uint64_t> distinct;

    // Values that are neither null nor empty, nor hold others.
    std::uint64_t Values() const { return texts + numbers + words; }
    bool IsInList() const;
    bool IsScalarOnly() const { return objects == 0 && lists == 0; }
    // No value comes twice.
    bool IsUnique() const { return distinct && *distinct == Values() && Values() > 0; }

    // Counts a value that is no object and no list.
    void Add(RowTree::Kind kind, std::string_view text, ValueSpool& spool);

  private:
    void AddText(std::string_view text);
    void Distinguish(std::string_view text, ValueSpool& spool);
};

}  // namespace tool

#endif
