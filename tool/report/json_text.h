#ifndef TOOL_REPORT_JSON_TEXT_H
#define TOOL_REPORT_JSON_TEXT_H

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>

namespace tool {

// `json` in one line. What is not UTF-8, in a file name or a damaged database, becomes U+FFFD.
// Characters that would do something to a terminal are escaped, those that `json` leaves alone too.
std::string JsonText(const nlohmann::ordered_json& json);

// `object`, whose member "record" is a number, with a member "unit" where that counts something
// else than records: rows, say.
nlohmann::ordered_json WithUnit(nlohmann::ordered_json object, std::string_view unit);

}  // namespace tool

#endif
