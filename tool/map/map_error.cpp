#include "tool/map/map_error.h"

#include <fmt/format.h>

namespace tool {

MapError::MapError(const std::string& file, MapPlace place, const std::string& text)
    : SourceError(fmt::format("{}:{}:{}: {}", file, place.line, place.column, text)) {}

}  // namespace tool
