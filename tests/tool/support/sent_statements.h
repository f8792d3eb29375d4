#ifndef TESTS_TOOL_SENT_STATEMENTS_H
#define TESTS_TOOL_SENT_STATEMENTS_H

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "server_proxy.h"

namespace tool {

// The statements that programs send through a proxy, and how often each is executed.
class SentStatements {
  public:
    ServerProxy::Watch Watch() {
        return [this](const ServerProxy::Message& message) {
            if (message.from == ServerProxy::Side::Client) {
                Take(message);
            }
            return ServerProxy::Fate::Pass;
        };
    }

    const std::map<std::string, std::size_t>& Executed() const { return m_executed; }

  private:
    // Texts in messages end with a zero byte.
    static std::string TextAt(std::string_view text, std::size_t at) {
        return std::string(text.substr(at, text.find('\0', at) - at));
    }

    // The statement whose rows a cursor fetches; another one as it is.
    static std::string WithoutCursor(const std::string& statement) {
        constexpr std::string_view before = " CURSOR WITHOUT HOLD FOR ";
        const std::size_t at =
            statement.starts_with("DECLARE ") ? statement.find(before) : std::string::npos;
        return at == std::string::npos ? statement : statement.substr(at + before.size());
    }

    void Take(const ServerProxy::Message& message) {
        const std::string first = TextAt(message.text, 0);
        if (message.type == 'P') {  // name, statement
            m_named[{message.connection, first}] = TextAt(message.text, first.size() + 1);
        } else if (message.type == 'B') {  // portal, name
            ++m_executed[m_named[{message.connection, TextAt(message.text, first.size() + 1)}]];
        } else if (message.type == 'Q') {
            ++m_executed[WithoutCursor(first)];
        }
    }

    std::map<std::pair<std::size_t, std::string>, std::string> m_named;  // by connection
    std::map<std::string, std::size_t> m_executed;
};

}  // namespace tool

#endif
