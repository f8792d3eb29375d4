#ifndef TESTS_TOOL_PROCESS_FIXTURE_H
#define TESTS_TOOL_PROCESS_FIXTURE_H

#include <functional>
#include <string>
#include <vector>

#include "child_process.h"
#include "load_fixture.h"

namespace tool {

// The tool as a person meets it: exit code and what it says.
class ProcessFixture : public LoadFixture {
  protected:
    using LoadFixture::LoadFixture;

    struct Answer {
        int code;
        std::string text;
    };

    Answer Run(std::vector<std::string> arguments,
               const std::function<void()>& prepare = {}) const {
        arguments.insert(arguments.begin(), ZTIMPORT);
        ChildProcess tool(arguments, prepare);
        const int code = tool.Wait();
        return {code, tool.Output()};
    }
};

}  // namespace tool

#endif
