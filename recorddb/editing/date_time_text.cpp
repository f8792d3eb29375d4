#include "platform/core/addatetime.h"
#include "recorddb/model/stored_values.h"
#include "recorddb/value_text.h"

namespace recorddb {

std::optional<std::string> DateTimeOf(std::string_view text) {
    // Most sources write the stored form, which need not be taken apart and put together again.
    if (IsStoredDateTime(text)) {
        return std::string(text);
    }
    AdDateTime time;
    if (time.ParseDateTime(Obx_String::FromUtf8(text), 0) == 0) {
        return std::nullopt;
    }
    return time.Format(u"%Y-%m-%d %H:%M:%S").ToUtf8();
}

}  // namespace recorddb
