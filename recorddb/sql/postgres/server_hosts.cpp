#include "recorddb/sql/postgres/server_hosts.h"

#include <libpq-fe.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <string_view>
#include <utility>

#include "platform/foundation/out_of_memory.h"
#include "recorddb/errors.h"

namespace recorddb::sql {

namespace {

[[noreturn]] void CannotConnect(const std::string& why) {
    throw Error(ErrorKind::CannotOpen, why, "");
}

std::string TrimmedLines(std::string text) {
    while (!text.empty() && text.back() == '\n') {
        text.pop_back();
    }
    return text;
}

std::vector<std::string> Items(std::string_view list) {
    std::vector<std::string> items;
    for (std::size_t comma = 0; comma != std::string_view::npos;) {
        comma = list.find(',');
        items.emplace_back(list.substr(0, comma));
        list.remove_prefix(comma == std::string_view::npos ? list.size() : comma + 1);
    }
    return items;
}

// The list without one place of it; a list of one item, which is meant for all places, stays.
std::string Without(const std::string& list, std::size_t place) {
    std::vector<std::string> items = Items(list);
    if (items.size() == 1) {
        return list;
    }
    std::string rest;
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (i != place) {
            rest += (i == 0 || (i == 1 && place == 0) ? "" : ",") + items[i];
        }
    }
    return rest;
}

std::string_view Text(const char* text) {
    return text == nullptr ? std::string_view() : text;
}

// Keywords and values for libpq.
class Settings {
  public:
    void Add(const char* keyword, const char* value) {
        m_keywords.push_back(keyword);
        m_values.push_back(value);
    }
    pg_conn* Connect() {
        Add(nullptr, nullptr);
        return PQconnectdbParams(m_keywords.data(), m_values.data(), 1);
    }

  private:
    std::vector<const char*> m_keywords;
    std::vector<const char*> m_values;
};

// What is not said otherwise. A server that has vanished is noticed within a minute, also while an
// answer is waited for.
constexpr const char* kConnectTimeout = "30";
constexpr std::pair<const char*, const char*> kDefaults[] = {
    {"fallback_application_name", "ztimport"},
    {"connect_timeout", kConnectTimeout},
    {"keepalives_idle", "30"},
    {"keepalives_interval", "10"},
    {"keepalives_count", "3"},
    {"tcp_user_timeout", "60000"}};

// The seconds that are left for each of so many servers. libpq takes 0 for no limit, and 1 for 2.
long ShareOf(std::chrono::milliseconds patience, std::size_t servers) {
    const auto all = std::chrono::ceil<std::chrono::seconds>(patience).count();
    const auto count = static_cast<long>(servers);
    return std::max(2L, (all + count - 1) / count);
}

// True where the limit that is said comes later than `seconds`. libpq is to judge what is no
// number.
bool IsLonger(const std::string& said, long seconds) {
    long limit = 0;
    const auto [end, error] = std::from_chars(said.data(), said.data() + said.size(), limit);
    return error == std::errc() && (limit <= 0 || limit > seconds);
}

bool AreSeveral(const ConnectionOptions& options) {
    return options.Value("host").find(',') != std::string::npos ||
           options.Value("hostaddr").find(',') != std::string::npos;
}

}  // namespace

ServerHosts::ServerHosts(std::string url)
    : m_url(std::move(url)), m_options(ConnectionOptions::InUrl(m_url)) {}

PostgresHandle ServerHosts::Connect(bool writes,
                                    std::optional<std::chrono::milliseconds> patience) const {
    // The URL is expanded in the place of `dbname`; what comes after it takes precedence over the
    // URL, what comes before it does not, but over all that the URL does not say itself.
    const ConnectionOptions said = ConnectionOptions::ForUrl(m_url);
    Settings settings;
    for (const auto& [keyword, value] : kDefaults) {
        if (!said.Says(keyword)) {
            settings.Add(keyword, value);
        }
    }
    if (writes && AreSeveral(said) && !SaysWhichServers(said)) {
        settings.Add("target_session_attrs", "read-write");
    }
    settings.Add("dbname", m_url.c_str());
    settings.Add("client_encoding", "UTF8");
    std::string limit;
    if (patience) {
        const long share = ShareOf(*patience, Count(said));
        const std::string usual = said.Value("connect_timeout");
        if (IsLonger(usual.empty() ? kConnectTimeout : usual, share)) {
            limit = std::to_string(share);
            settings.Add("connect_timeout", limit.c_str());
        }
    }
    if (m_hasLeftOut) {
        settings.Add("host", m_hosts.c_str());
        settings.Add("hostaddr", m_addresses.c_str());
        settings.Add("port", m_ports.c_str());
    }
    pg_conn* const raw = settings.Connect();
    if (raw == nullptr) {
        ThrowOutOfMemory();
    }
    PostgresHandle handle(raw);
    if (PQstatus(raw) != CONNECTION_OK) {
        CannotConnect(TrimmedLines(PQerrorMessage(raw)));
    }
    return handle;
}

// "any" is what libpq itself takes; whether a service says it as well, it does not tell.
bool ServerHosts::SaysWhichServers(const ConnectionOptions& said) const {
    constexpr const char* keyword = "target_session_attrs";
    return said.Value(keyword) != "any" || m_options.Says(keyword) ||
           std::getenv("PGTARGETSESSIONATTRS") != nullptr;
}

// How many servers are tried, where each name is that of one.
std::size_t ServerHosts::Count(const ConnectionOptions& said) const {
    return std::max(Items(m_hasLeftOut ? m_hosts : said.Value("host")).size(),
                    Items(m_hasLeftOut ? m_addresses : said.Value("hostaddr")).size());
}

bool ServerHosts::LeaveOut(const PostgresHandle& handle) {
    const ConnectionOptions options = ConnectionOptions::Of(handle.Raw());
    const std::string hosts = options.Value("host");
    const std::string addresses = options.Value("hostaddr");
    const std::string ports = options.Value("port");
    const std::vector<std::string> hostItems = Items(hosts);
    const std::vector<std::string> addressItems = Items(addresses);
    const std::vector<std::string> portItems = Items(ports);
    const std::size_t count = std::max(hostItems.size(), addressItems.size());
    for (std::size_t place = 0; count > 1 && place < count; ++place) {
        const bool isHost = place >= hostItems.size() || hosts.empty() ||
                            hostItems[place] == Text(PQhost(handle.Raw()));
        const bool isAddress = place >= addressItems.size() || addresses.empty() ||
                               addressItems[place] == Text(PQhostaddr(handle.Raw()));
        const std::string& port = portItems.size() == 1 ? ports : portItems[place];
        if (isHost && isAddress && port == Text(PQport(handle.Raw()))) {
            m_hasLeftOut = true;
            m_hosts = Without(hosts, place);
            m_addresses = Without(addresses, place);
            m_ports = Without(ports, place);
            return true;
        }
    }
    return false;
}

std::string PlaceOf(const PostgresHandle& handle) {
    return std::string(Text(PQhost(handle.Raw()))) + " port " +
           std::string(Text(PQport(handle.Raw())));
}

}  // namespace recorddb::sql
