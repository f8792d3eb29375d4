#include "tool/commands/check_command.h"

#include "tool/commands/load_command.h"

namespace tool {

int RunCheck(LoadOptions options, std::ostream& out, std::ostream& err) {
    options.rehearse = true;
    return RunLoad(options, out, err);
}

}  // namespace tool
