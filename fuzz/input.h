#ifndef FUZZ_INPUT_H
#define FUZZ_INPUT_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

// What every fuzz target defines: works on one input, returns 0. libFuzzer calls it in the fuzz
// build, corpus_runner.cpp everywhere else.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fuzz {

// An input: a text, and after it the bytes that choose how it is worked on. The choices stand at
// the end, so that a real file is a good input as it is.
class Input {
  public:
    Input(const std::uint8_t* data, std::size_t size)
        : m_text(reinterpret_cast<const char*>(data), size) {}

    // Takes one byte off the end; 0 when there is none.
    std::uint8_t TakeChoice() {
        if (m_text.empty()) {
            return 0;
        }
        const auto choice = static_cast<std::uint8_t>(m_text.back());
        m_text.remove_suffix(1);
        return choice;
    }

    std::string_view Text() const { return m_text; }

  private:
    std::string_view m_text;
};

// Ends the process, which makes the input a finding, unless the property that `what` describes
// `holds`.
inline void Expect(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "This does not hold: %s\n", what);
        std::abort();
    }
}

}  // namespace fuzz

#endif
