#ifndef TOOL_SOURCES_JSON_JSON_EVENTS_H
#define TOOL_SOURCES_JSON_JSON_EVENTS_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "tool/sources/rows/row_tree.h"

namespace tool {

// The parser, which refuses numbers that its type for fractions cannot hold: so this has the widest
// one, although every number is taken as its text.
using WideJson = nlohmann::basic_json<std::map, std::vector, std::string, bool, std::int64_t,
                                      std::uint64_t, long double>;

// The events of nlohmann's parser as the few that the readers need: each value once, with its text
// as it was written. A handler's function that returns false ends the parsing.
class JsonEvents {
  public:
    using number_integer_t = WideJson::number_integer_t;
    using number_unsigned_t = WideJson::number_unsigned_t;
    using number_float_t = WideJson::number_float_t;
    using string_t = WideJson::string_t;
    using binary_t = WideJson::binary_t;

    JsonEvents() = default;
    JsonEvents(const JsonEvents&) = delete;
    JsonEvents& operator=(const JsonEvents&) = delete;
    virtual ~JsonEvents() = default;

    virtual bool Value(RowTree::Kind kind, std::string_view text) = 0;
    // `kind` is Object or List.
    virtual bool Open(RowTree::Kind kind) = 0;
    virtual bool Close() = 0;
    virtual bool Member(std::string_view name) = 0;
    // The text is no JSON; nothing follows.
    virtual void Fail(const std::string& why) = 0;

    // What the parser calls.
    bool null() { return Value(RowTree::Kind::Null, {}); }
    bool boolean(bool value) { return Value(RowTree::Kind::Word, value ? "true" : "false"); }
    bool number_integer(number_integer_t value);
    bool number_unsigned(number_unsigned_t value);
    bool number_float(number_float_t /*value*/, const string_t& text) {
        return Value(RowTree::Kind::Number, text);
    }
    bool string(const string_t& text) { return Value(RowTree::Kind::Text, text); }
    bool binary(const binary_t& /*value*/) { return false; }
    bool start_object(std::size_t /*size*/) { return Open(RowTree::Kind::Object); }
    bool key(const string_t& name) { return Member(name); }
    bool end_object() { return Close(); }
    bool start_array(std::size_t /*size*/) { return Open(RowTree::Kind::List); }
    bool end_array() { return Close(); }
    bool parse_error(std::size_t position, const std::string& token,
                     const nlohmann::detail::exception& error);
};

}  // namespace tool

#endif
