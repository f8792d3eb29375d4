#include "recorddb/sql/postgres/server_hosts.h"

#include <libpq-fe.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <utility>

#include "platform/foundation/out_of_memory.h"
#include "recorddb/errors.h"

namespace recorddb::sql {

namespace {

using Options = std::unique_ptr<PQconninfoOption, void (*)(PQconninfoOption*)>;

[[noreturn]] void CannotConnect(const std::string& why) {
    throw Error(ErrorKind::CannotOpen, why, "");
}

std::string TrimmedLines(std::string text) {
    while (!text.empty() && text.back() == '\n') {
        text.pop_back();
    }
    return text;
}

// libpq quotes what it cannot read, which may be a piece of a password.
std::string WithoutQuotes(const std::string& complaint) {
    return TrimmedLines(complaint.substr(0, complaint.find(": \"")));
}

Options OptionsOf(const std::string& url) {
    char* complaint = nullptr;
    Options options(PQconninfoParse(url.c_str(), &complaint), PQconninfoFree);
    const std::unique_ptr<char, void (*)(void*)> owned(complaint, PQfreemem);
    if (options == nullptr && complaint != nullptr) {
        CannotConnect("the URL of the database cannot be read: " + WithoutQuotes(complaint));
    }
    if (options == nullptr) {
        ThrowOutOfMemory();
    }
    return options;
}

std::string ValueOf(const PQconninfoOption* option, std::string_view keyword) {
    for (; option->keyword != nullptr; ++option) {
        if (option->keyword == keyword) {
            return option->val == nullptr ? "" : option->val;
        }
    }
    return {};
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
    // What the environment may say as well, and then does.
    void AddUnlessSet(const char* variable, const char* keyword, const char* value) {
        if (std::getenv(variable) == nullptr) {
            Add(keyword, value);
        }
    }
    pg_conn* Connect() {
        Add(nullptr, nullptr);
        return PQconnectdbParams(m_keywords.data(), m_values.data(), 1);
    }

  private:
    std::vector<const char*> m_keywords;
    std::vector<const char*> m_values;
};

}  // namespace

ServerHosts::ServerHosts(std::string url) : m_url(std::move(url)) {
    const Options options = OptionsOf(m_url);
    const auto isList = [&](const char* keyword, const char* variable) {
        const std::string value = ValueOf(options.get(), keyword);
        return (value.empty() ? Text(std::getenv(variable)) : value).find(',') !=
               std::string_view::npos;
    };
    m_areSeveral = isList("host", "PGHOST") || isList("hostaddr", "PGHOSTADDR");
}

PostgresHandle ServerHosts::Connect(bool writes) const {
    // The URL is expanded in the place of `dbname`; what comes after it takes precedence over the
    // URL, what comes before it does not. A server that has vanished is noticed within a minute,
    // also while an answer is waited for.
    Settings settings;
    settings.Add("fallback_application_name", "ztimport");
    settings.AddUnlessSet("PGCONNECT_TIMEOUT", "connect_timeout", "30");
    settings.Add("keepalives_idle", "30");
    settings.Add("keepalives_interval", "10");
    settings.Add("keepalives_count", "3");
    settings.Add("tcp_user_timeout", "60000");
    if (writes && m_areSeveral) {
        settings.AddUnlessSet("PGTARGETSESSIONATTRS", "target_session_attrs", "read-write");
    }
    settings.Add("dbname", m_url.c_str());
    settings.Add("client_encoding", "UTF8");
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

bool ServerHosts::LeaveOut(const PostgresHandle& handle) {
    const Options options(PQconninfo(handle.Raw()), PQconninfoFree);
    if (options == nullptr) {
        ThrowOutOfMemory();
    }
    const std::string hosts = ValueOf(options.get(), "host");
    const std::string addresses = ValueOf(options.get(), "hostaddr");
    const std::string ports = ValueOf(options.get(), "port");
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
