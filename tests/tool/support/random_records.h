#ifndef TESTS_TOOL_RANDOM_RECORDS_H
#define TESTS_TOOL_RANDOM_RECORDS_H

#include <cstddef>
#include <random>
#include <string>

// Texts for tests that state a rule about any text.
namespace reading {

class RandomText {
  public:
    explicit RandomText(unsigned seed) : m_random(seed) {}

    std::size_t Below(std::size_t limit) { return m_random() % limit; }

    // Marks, tags, text and what is not text, in any order.
    std::string Soup();

    // A well-formed record with fields, comments, CDATA sections and instructions.
    std::string Record();

    // A value that a packet cannot carry, most likely: what its rules look at, noncharacters, and
    // parts of both. Valid UTF-8 without NUL.
    std::string Value();

    // What may stand between records: text, other elements and sections, but no record.
    std::string Gap();

  private:
    std::string Section();
    std::string Content();

    std::mt19937 m_random;
};

// A seed that differs from run to run; tests print it when they fail.
unsigned NewSeed();

}  // namespace reading

#endif
