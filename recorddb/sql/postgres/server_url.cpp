#include "recorddb/sql/postgres/server_url.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <vector>

#include "recorddb/errors.h"

namespace recorddb::sql {

namespace {

constexpr std::string_view kSchemaParameter = "schema";

// Parameters of which messages may speak: they tell which database is meant and hold no secrets.
constexpr std::array<std::string_view, 5> kShownParameters = {"dbname", "host", "port", "service",
                                                              kSchemaParameter};

// The pieces of a URL, "scheme://[user@]place[?parameter&parameter]".
struct Pieces {
    std::string_view scheme;  // with the "://"
    std::string_view user;    // with the "@"
    std::string_view place;
    std::vector<std::string_view> parameters;
};

[[noreturn]] void Refuse(const std::string& why) {
    throw Error(ErrorKind::CannotOpen, "the URL of the database cannot be read: " + why, "");
}

Pieces TakeApart(std::string_view url) {
    constexpr std::string_view separator = "://";
    Pieces pieces;
    pieces.scheme = url.substr(0, url.find(separator) + separator.size());
    url.remove_prefix(pieces.scheme.size());
    // The user goes up to the first "@" that stands before any "/", as the client library reads it.
    const std::size_t end = url.find_first_of("@/");
    if (end != std::string_view::npos && url[end] == '@') {
        pieces.user = url.substr(0, end + 1);
        url.remove_prefix(end + 1);
    }
    const std::size_t query = std::min(url.find('?'), url.size());
    pieces.place = url.substr(0, query);
    url.remove_prefix(query);
    while (!url.empty()) {
        url.remove_prefix(1);
        const std::size_t next = std::min(url.find('&'), url.size());
        pieces.parameters.push_back(url.substr(0, next));
        url.remove_prefix(next);
    }
    return pieces;
}

std::string_view NameOf(std::string_view parameter) {
    return parameter.substr(0, parameter.find('='));
}

// The value of a parameter, "%20" read as a blank.
std::string ValueOf(std::string_view parameter) {
    const std::size_t equals = parameter.find('=');
    std::string_view rest =
        equals == std::string_view::npos ? std::string_view() : parameter.substr(equals + 1);
    std::string value;
    while (!rest.empty()) {
        if (rest.front() != '%') {
            value += rest.front();
            rest.remove_prefix(1);
            continue;
        }
        constexpr int hexadecimal = 16;
        constexpr std::size_t length = 3;
        const std::string_view digits = rest.substr(1, length - 1);
        unsigned char code = 0;
        const auto [end, error] =
            std::from_chars(digits.data(), digits.data() + digits.size(), code, hexadecimal);
        if (error != std::errc() || digits.size() != length - 1 ||
            end != digits.data() + digits.size() || code == 0) {
            Refuse("a \"%\" in the parameter " + std::string(NameOf(parameter)) +
                   " is written %25");
        }
        value += static_cast<char>(code);
        rest.remove_prefix(length);
    }
    return value;
}

std::string Encoded(std::string_view text) {
    constexpr std::string_view plain =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-.";
    constexpr std::string_view hex = "0123456789ABCDEF";
    std::string encoded;
    for (const char character : text) {
        if (plain.find(character) != std::string_view::npos) {
            encoded += character;
        } else {
            const auto code = static_cast<unsigned char>(character);
            encoded += '%';
            encoded += hex[code >> 4U];
            encoded += hex[code & 0xFU];
        }
    }
    return encoded;
}

bool IsSchema(std::string_view parameter) {
    return NameOf(parameter) == kSchemaParameter;
}

bool IsShown(std::string_view parameter) {
    return std::find(kShownParameters.begin(), kShownParameters.end(), NameOf(parameter)) !=
           kShownParameters.end();
}

template <typename Keep>
std::string PutTogether(const Pieces& pieces, bool withUser, Keep keep) {
    std::string url(pieces.scheme);
    url += withUser ? pieces.user : std::string_view();
    url += pieces.place;
    char separator = '?';
    for (const std::string_view parameter : pieces.parameters) {
        if (keep(parameter)) {
            url += separator;
            url += parameter;
            separator = '&';
        }
    }
    return url;
}

}  // namespace

ServerUrl ReadServerUrl(std::string_view url) {
    const Pieces pieces = TakeApart(url);
    if (pieces.place.find('@') != std::string_view::npos) {
        Refuse(
            "in a user name or password, write %40 for \"@\" and %2F for \"/\"; or leave the "
            "password to a password file or PGPASSWORD");
    }
    ServerUrl read;
    read.connection =
        PutTogether(pieces, true, [](std::string_view parameter) { return !IsSchema(parameter); });
    read.shown = PutTogether(pieces, false, IsShown);
    for (const std::string_view parameter : pieces.parameters) {
        if (IsSchema(parameter)) {
            read.schema = ValueOf(parameter);
        }
    }
    return read;
}

std::string UrlWithSchema(std::string_view url, std::string_view schema) {
    const Pieces pieces = TakeApart(url);
    std::string with =
        PutTogether(pieces, true, [](std::string_view parameter) { return !IsSchema(parameter); });
    with +=
        with.find('?', pieces.scheme.size() + pieces.user.size()) == std::string::npos ? '?' : '&';
    with += kSchemaParameter;
    with += '=';
    with += Encoded(schema);
    return with;
}

}  // namespace recorddb::sql
