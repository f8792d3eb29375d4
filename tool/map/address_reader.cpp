#include "tool/map/address_reader.h"

#include <fmt/format.h>

#include <string_view>

namespace tool {

namespace {

// A step with "~1" for "/" and "~0" for "~".
std::string Decoded(const YamlFile& file, std::string_view step, MapPlace place) {
    std::string text;
    for (std::size_t at = 0; at < step.size(); ++at) {
        if (step[at] != '~') {
            text += step[at];
            continue;
        }
        const std::string_view escape = step.substr(at, 2);
        if (escape != "~0" && escape != "~1") {
            file.Fail(place, fmt::format("'{}' cannot be a part of an address: after a '~' comes 0 "
                                         "(for '~') or 1 (for '/')",
                                         step));
        }
        text += escape == "~0" ? '~' : '/';
        ++at;
    }
    return text;
}

}  // namespace

std::vector<std::string> ReadPath(const YamlFile& file, const std::string& text, MapPlace place) {
    std::vector<std::string> steps;
    std::string_view rest = text;
    while (true) {
        const std::size_t end = rest.find('/');
        const std::string_view step = rest.substr(0, end);
        if (step.empty()) {
            file.Fail(place, fmt::format("'{}' cannot be an address: a name in it is empty", text));
        }
        steps.push_back(Decoded(file, step, place));
        if (end == rest.npos) {
            return steps;
        }
        rest.remove_prefix(end + 1);
    }
}

MapAddress ReadAddress(const YamlFile& file, const std::string& text, MapPlace place,
                       const AddressUse& use) {
    MapAddress address;
    address.text = text;
    address.place = place;
    if (text.empty()) {
        file.Fail(place, "an address is empty");
    }
    if (text == ".") {
        if (use.format == MapFormat::Csv && !use.hasItem) {
            file.Fail(place, "'.' is the cell that 'each' names, and this step has no 'each'");
        }
        address.isItem = true;
        return address;
    }
    if (use.format == MapFormat::Csv) {
        address.isFromRow = true;
        address.steps = {text};
        return address;
    }
    address.isFromRow = text.starts_with('/') || !use.hasItem;
    address.steps = ReadPath(file, text.starts_with('/') ? text.substr(1) : text, place);
    return address;
}

MapAddress ReadAddress(const YamlFile& file, const YamlNode& node, const AddressUse& use) {
    if (node.IsMap()) {
        file.AllowOnly(node, {"column"}, "an address");
        const YamlNode& column = file.Require(node, "column", "an address", "such as {column: 7}");
        if (use.format != MapFormat::Csv) {
            file.Fail(node.Place(), "{column: ...} is an address in CSV files only");
        }
        MapAddress address;
        address.place = node.Place();
        address.isFromRow = true;
        address.column = file.NumberOf(column, "'column'") - 1;
        address.text = fmt::format("column {}", *address.column + 1);
        return address;
    }
    return ReadAddress(file, file.TextOf(node, "an address"), node.Place(), use);
}

std::vector<MapAddress> ReadAddresses(const YamlFile& file, const YamlNode& node,
                                      const AddressUse& use) {
    std::vector<MapAddress> addresses;
    if (!node.IsList()) {
        addresses.push_back(ReadAddress(file, node, use));
        return addresses;
    }
    if (node.Items().empty()) {
        file.Fail(node.Place(), "the list of addresses is empty");
    }
    for (const YamlNode& item : node.Items()) {
        addresses.push_back(ReadAddress(file, item, use));
    }
    return addresses;
}

}  // namespace tool
