#ifndef TOOL_SOURCES_MAPPED_LOCAL_TIME_H
#define TOOL_SOURCES_MAPPED_LOCAL_TIME_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tool {

// A time zone.
class LocalZone {
  public:
    // `name` is known to be one of a zone.
    explicit LocalZone(const std::string& name);
    ~LocalZone();
    LocalZone(const LocalZone&) = delete;
    LocalZone& operator=(const LocalZone&) = delete;

    enum class Answer { Once, Twice, Skipped };

    // Turns `seconds` since 1970 on the clocks of the zone into those of UTC. A time that the
    // clocks showed twice means the first of the two; one that they skipped stays as it is.
    Answer ToUtc(std::int64_t& seconds) const;

  private:
    struct Zone;
    std::unique_ptr<Zone> m_zone;
};

// A date as a packet has it, and what there is to say about it.
struct MadeDate {
    std::string text;
    std::string error;       // empty: it could be read
    bool cameTwice = false;  // the clocks showed this time twice
};

// Reads a date by the first of `formats` that fits; by ISO 8601 when there are none: then a text
// that is something else is left as it is. A date that says nothing of a zone is one of `zone`.
MadeDate ReadDate(std::string_view text, const std::vector<std::string>& formats,
                  const LocalZone& zone);

}  // namespace tool

#endif
