#ifndef TESTS_TOOL_VERIFY_FIXTURE_H
#define TESTS_TOOL_VERIFY_FIXTURE_H

#include <string>
#include <string_view>
#include <vector>

#include "load_fixture.h"
#include "tool/verify/sinks/verify_options.h"

namespace tool {

// A configuration item: the packets change records that are there.
inline constexpr const char* kUpdate = "<updaterecord name=\"TRUE\"/>";

// A bug with nothing but what every bug must have.
inline const Fields kBug = {{"source_id", "C-1"}, {"title", "One"}};

// A loaded tracker, and the words in which tests of comparisons speak of it.
class VerifyFixture : public LoadFixture {
  protected:
    explicit VerifyFixture(Engine engine = Engine::Sqlite);

    // Packets of two users and three keywords, under their configurations.
    std::vector<std::string> Basics();

    // Packets of bugs that use all that a record can have: C-1 has every kind of value, two
    // attachments and three history entries, two of one time; C-2 is its duplicate, and has little
    // else. Their configurations and those of the basics are among them.
    std::vector<std::string> Tracker();

    // A data packet of bugs after its configuration. `more` are further configuration items.
    std::vector<std::string> Bugs(const std::string& name, const std::vector<Fields>& records,
                                  std::string_view more = "", std::string_view data = "record");

    // Compares the sources with the database; returns the exit code.
    int Verify(const std::vector<std::string>& sources);
    // Loads the sources, which must go without a rejection, and compares.
    int LoadAndVerify(const std::vector<std::string>& sources);
    // Loads the basics and these bugs, and compares; what was loaded is then in m_sources.
    int LoadAndVerifyBugs(const std::vector<Fields>& bugs, std::string_view more = "");
    // Loads something more, which joins m_sources, and compares all of it.
    int LoadAndVerifyMore(const std::vector<std::string>& more);

    // What the last comparison said, and its differences, one a line, in the form
    // "ID|FIELD|SOURCE|DATABASE|PROBLEM".
    std::string Shown() const { return m_shown; }
    std::string Differences() const;
    // The faults of the database in the form "TYPE|ID|FIELD|DATABASE|PROBLEM".
    std::string Faults() const;
    // The report as it was written.
    std::string Report() const;

    // Does to the database what no import would.
    void Damage(const std::string& sql);

    VerifyOptions m_verifyOptions;
    std::vector<std::string> m_sources;

  private:
    std::string m_shown;
};

// One list after the other.
std::vector<std::string> Together(std::vector<std::string> sources,
                                  const std::vector<std::string>& more);

}  // namespace tool

#endif
