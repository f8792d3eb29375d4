#ifndef TESTS_ZTIMPORTER_THROWN_CASES_H
#define TESTS_ZTIMPORTER_THROWN_CASES_H

#include <gtest/gtest.h>

#include <initializer_list>
#include <ostream>
#include <string>
#include <vector>

#include "tests/scripted/thrown.h"

// A call to the core, told by its name and by which occurrence of the name it is.
struct CoreCall {
    std::string name;
    int occurrence = 1;
};

// A call that throws an exception of one kind.
struct ThrownCase {
    CoreCall call;
    ThrownKind kind;
};

// Every kind of exception at every one of the calls.
inline std::vector<ThrownCase> EachKindAt(std::initializer_list<CoreCall> calls) {
    std::vector<ThrownCase> cases;
    for (const CoreCall& call : calls) {
        for (const ThrownKind kind : kThrownKinds) {
            cases.push_back({call, kind});
        }
    }
    return cases;
}

// The names of such test instances, such as "Commit1_Message".
inline std::string NameOfCase(const testing::TestParamInfo<ThrownCase>& instance) {
    const CoreCall& call = instance.param.call;
    return call.name + std::to_string(call.occurrence) + "_" + NameOf(instance.param.kind);
}

inline std::string NameOfKind(const testing::TestParamInfo<ThrownKind>& instance) {
    return NameOf(instance.param);
}

inline void PrintTo(const ThrownCase& thrown, std::ostream* out) {
    *out << NameOf(thrown.kind) << " at " << thrown.call.name << " " << thrown.call.occurrence;
}

#endif
