// What a comparison says does not depend on how many workers compare.
#include <gmock/gmock.h>

#include <regex>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "compared_load.h"
#include "server_proxy.h"
#include "verify/verify_fixture.h"

namespace tool {
namespace {

using testing::HasSubstr;

class VerifyWorkersTest : public OnEachEngine<VerifyFixture> {
  protected:
    // More than one package of records, of which each third is not as the sources say.
    std::vector<std::string> DamagedTracker() {
        constexpr int count = 130;
        std::vector<Fields> bugs;
        std::vector<Fields> changes;
        for (int i = 0; i < count; ++i) {
            const std::string id = std::to_string(i);
            bugs.push_back({{"source_id", id},
                            {"title", "title " + id},
                            {"owner", "ann@x"},
                            {"keywords", "red,green"},
                            {"votes", id}});
            changes.push_back({{"source_id", id}, {"title", "changed " + id}});
        }
        const std::vector<std::string> sources =
            Together(Together(Tracker(), Bugs("more", bugs)), Bugs("changes", changes, kUpdate));
        EXPECT_EQ(Load(sources), 0) << Said();
        Damage("UPDATE bug SET votes = votes + 1 WHERE dbid % 3 = 0");
        Damage("DELETE FROM bug__keywords WHERE position = 2 AND record % 5 = 0");
        return sources;
    }

    std::string With(std::size_t workers, const std::vector<std::string>& sources) {
        m_verifyOptions.workers = workers;
        m_verifyOptions.waitsForWorkers = true;
        const int code = Verify(sources);
        static const std::regex time("[0-9.]+ seconds");
        return std::to_string(code) + std::regex_replace(WithoutRates(Shown()), time, "") +
               WithoutChance(Report());
    }
};

ON_EACH_ENGINE(VerifyWorkersTest);

TEST_P(VerifyWorkersTest, AnyNumberSaysTheSame) {
    std::vector<std::string> sources = DamagedTracker();
    m_verifyOptions.exact = true;
    const std::vector<std::string> some(sources.begin(), sources.end() - 2);
    const std::string all = With(1, sources);
    const std::string part = With(1, some);
    EXPECT_THAT(all, HasSubstr("NOT verified"));
    for (const std::size_t workers : {2U, 5U}) {
        EXPECT_EQ(With(workers, sources), all) << workers << " workers";
        EXPECT_EQ(With(workers, some), part) << workers << " workers";
    }
}

TEST_P(VerifyWorkersTest, LossOfTheWorkersConnectionsIsToldAndChangesNothing) {
    if (IsFile()) {
        GTEST_SKIP() << "a file is not lost";
    }
    const std::vector<std::string> sources = DamagedTracker();
    const std::string all = With(1, sources);
    std::set<std::size_t> begun;
    const std::string direct = m_database;
    std::string told;
    {
        const ServerProxy proxy(
            SocketFolderOf(direct), m_folder.Path(), [&](const ServerProxy::Message& message) {
                const bool isWorkers = begun.contains(message.connection);
                if (message.text.find("SET TRANSACTION SNAPSHOT") != std::string_view::npos) {
                    begun.insert(message.connection);
                }
                return isWorkers && message.from == ServerProxy::Side::Client
                           ? ServerProxy::Fate::Cut
                           : ServerProxy::Fate::Pass;
            });
        m_database = UrlWithSocketIn(direct, m_folder.Path());
        told = With(2, sources);
        m_database = direct;
    }
    static const std::regex warning("warning: fewer workers compare[^\n]*\n");
    EXPECT_TRUE(std::regex_search(told, warning)) << told;
    EXPECT_EQ(std::regex_replace(told, warning, ""), all);
}

}  // namespace
}  // namespace tool
