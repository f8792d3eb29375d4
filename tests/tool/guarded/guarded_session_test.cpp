#include "tool/guarded/guarded_session.h"

#include <gmock/gmock.h>

#include "tests/scripted/scripted_core.h"
#include "tests/scripted/scripted_session.h"

namespace tool {
namespace {

using testing::ElementsAre;

TEST(GuardedSession, LeavesAStateThatIsNotNamedUnnamed) {
    ScriptedCore core;
    ScriptedEntityDef& bug = core.AddRecordType(u"bug");
    const AdSessionPtr session = OpenGuarded(AdSessionPtr(new ScriptedSession(core)));
    ImportEntity(session, &bug, nullptr, nullptr);
    ImportEntity(session, &bug, Obx_String(u"").Units(), nullptr);
    ImportEntity(session, &bug, Obx_String(u"NEW\uFDD4").Units(), nullptr);
    EXPECT_THAT(core.Log().Lines({CallLog::Kind::kCall}),
                ElementsAre("ImportEntity(bug, null, null)", "ImportEntity(bug, '', null)",
                            "ImportEntity(bug, NEW,, null)"));
}

}  // namespace
}  // namespace tool
