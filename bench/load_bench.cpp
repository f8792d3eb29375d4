// Times `ztimport load`, against a floor that writes the same rows by SQLite's own interface:
// load_bench ZTIMPORT [RECORDS...], 10000 by default. For a number beyond that it tells how the
// cost of a record grows up to there instead. Beside a server (scripts/private-server) it times
// loads into that, too; with the word "server" in front of the numbers, nothing else, and prints
// the seconds alone (bench/server_settings.py).

#include <fmt/format.h>

#include <cstdlib>
#include <exception>
#include <string>
#include <vector>

#include "growth.h"
#include "ratios.h"

namespace {

constexpr std::int64_t kFew = 10'000;

int Main(const std::vector<std::string>& arguments) {
    if (arguments.empty()) {
        fmt::print(stderr, "usage: load_bench ZTIMPORT [server] [RECORDS...]\n");
        return 2;
    }
    const char* const set = std::getenv("ZT_TEST_SERVER");
    const std::string server = set == nullptr ? "" : set;
    const bool onServerAlone = arguments.size() > 1 && arguments[1] == "server";
    if (onServerAlone && server.empty()) {
        fmt::print(stderr,
                   "load_bench: ZT_TEST_SERVER names no server; run it by "
                   "scripts/private-server\n");
        return 2;
    }
    std::vector<std::int64_t> sizes;
    for (std::size_t i = onServerAlone ? 2 : 1; i < arguments.size(); ++i) {
        sizes.push_back(std::stoll(arguments[i]));
    }
    if (sizes.empty()) {
        sizes = {kFew};
    }
    for (const std::int64_t records : sizes) {
        if (onServerAlone) {
            bench::PrintServerSeconds(arguments[0], records, server);
            continue;
        }
        records > kFew ? bench::PrintGrowth(arguments[0], kFew, records, server)
                       : bench::PrintRatios(arguments[0], records, server);
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return Main(std::vector<std::string>(argv + 1, argv + argc));
    } catch (const std::exception& error) {
        fmt::print(stderr, "load_bench: {}\n", error.what());
        return 1;
    }
}
