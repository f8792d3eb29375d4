#include "tool/commands/version_text.h"

#include <expat.h>
#include <fmt/format.h>
#include <openssl/crypto.h>
#include <unicode/uversion.h>

#include <array>

#include "recorddb/versions.h"

namespace tool {

namespace {

std::string IcuVersion() {
    UVersionInfo version = {};
    u_getVersion(version);
    std::array<char, U_MAX_VERSION_STRING_LENGTH> text{};
    u_versionToString(version, text.data());
    return text.data();
}

}  // namespace

std::string VersionText() {
    const recorddb::Versions database = recorddb::GetVersions();
    const XML_Expat_Version expat = XML_ExpatVersionInfo();
    return fmt::format(
        "ztimport {}\n"
        "database format {} (uses formats from {})\n"
        "SQLite {}, libpq {}, expat {}.{}.{}, ICU {}, OpenSSL {}",
        ZT_VERSION, database.format, database.oldestFormat, database.sqlite, database.libpq,
        expat.major, expat.minor, expat.micro, IcuVersion(),
        OpenSSL_version(OPENSSL_VERSION_STRING));
}

}  // namespace tool
