#include "recorddb/sql/postgres/connection_options.h"

#include <libpq-fe.h>

#include <algorithm>
#include <memory>

#include "platform/foundation/out_of_memory.h"
#include "recorddb/errors.h"

namespace recorddb::sql {

namespace {

// libpq quotes what it cannot read, which may be a piece of a password.
std::string WithoutQuotes(std::string complaint) {
    complaint.resize(std::min(complaint.find(": \""), complaint.size()));
    while (!complaint.empty() && complaint.back() == '\n') {
        complaint.pop_back();
    }
    return complaint;
}

using Options = std::unique_ptr<PQconninfoOption, void (*)(PQconninfoOption*)>;

std::map<std::string, std::string, std::less<>> ValuesOf(const Options& options) {
    if (options == nullptr) {
        ThrowOutOfMemory();
    }
    std::map<std::string, std::string, std::less<>> values;
    for (const PQconninfoOption* option = options.get(); option->keyword != nullptr; ++option) {
        if (option->val != nullptr) {
            values.emplace(option->keyword, option->val);
        }
    }
    return values;
}

}  // namespace

ConnectionOptions ConnectionOptions::InUrl(const std::string& url) {
    char* complaint = nullptr;
    const Options options(PQconninfoParse(url.c_str(), &complaint), PQconninfoFree);
    const std::unique_ptr<char, void (*)(void*)> owned(complaint, PQfreemem);
    if (options == nullptr && complaint != nullptr) {
        throw Error(ErrorKind::CannotOpen,
                    "the URL of the database cannot be read: " + WithoutQuotes(complaint), "");
    }
    ConnectionOptions inUrl;
    inUrl.m_values = ValuesOf(options);
    return inUrl;
}

// No call of libpq reads the service that a URL names without connecting. So one is begun with a
// parameter that libpq refuses, which it does once it has all of them and before it looks for any
// host. A password is given so that it looks for none in the password file.
ConnectionOptions ConnectionOptions::ForUrl(const std::string& url) {
    const char* const keywords[] = {"dbname", "password", "sslmode", nullptr};
    const char* const values[] = {url.c_str(), "none", "refused by libpq", nullptr};
    const std::unique_ptr<PGconn, void (*)(PGconn*)> refused(
        PQconnectStartParams(keywords, values, 1), PQfinish);
    return Of(refused.get());
}

ConnectionOptions ConnectionOptions::Of(pg_conn* connection) {
    ConnectionOptions used;
    used.m_values = ValuesOf(Options(PQconninfo(connection), PQconninfoFree));
    return used;
}

std::string ConnectionOptions::Value(std::string_view keyword) const {
    const auto found = m_values.find(keyword);
    return found == m_values.end() ? std::string() : found->second;
}

}  // namespace recorddb::sql
