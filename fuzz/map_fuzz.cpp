#include <string>
#include <string_view>

#include "input.h"
#include "tool/map/map_error.h"
#include "tool/map/map_reader.h"

// A map is read, or refused with its place.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(fuzz::Input(data, size).Text());
    try {
        const tool::MapFile map = tool::ReadMap(text, "map.yaml");
        fuzz::Expect(!map.sources.empty() && !map.steps.empty(), "a map has sources and steps");
    } catch (const tool::MapError& error) {
        fuzz::Expect(std::string_view(error.what()).starts_with("map.yaml"),
                     "a refusal begins with its place");
    }
    return 0;
}
