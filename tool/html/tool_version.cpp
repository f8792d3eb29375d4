#include "tool/html/tool_version.h"

namespace tool {

const char* ToolVersion() {
    return ZT_VERSION;
}

}  // namespace tool
