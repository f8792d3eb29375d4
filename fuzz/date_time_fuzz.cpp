#include <string>

#include "input.h"
#include "platform/core/addatetime.h"

namespace {

using fuzz::Expect;

constexpr const char16_t* kPattern = u"%Y-%m-%d %H:%M:%S";

}  // namespace

// A time that is read can be written, and is then read as itself.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Obx_String text = Obx_String::FromUtf8(fuzz::Input(data, size).Text());
    AdDateTime time;
    if (time.ParseDateTime(text, 0) == 0) {
        return 0;
    }
    const Obx_String written = time.Format(kPattern);
    Expect(written.GetLength() == 19, "a time is written in full");
    AdDateTime again;
    Expect(again.ParseDateTime(written, 0) != 0, "what was written can be read");
    Expect(again.Format(kPattern) == written, "and is the same time");
    return 0;
}
