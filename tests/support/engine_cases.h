#ifndef TESTS_SUPPORT_ENGINE_CASES_H
#define TESTS_SUPPORT_ENGINE_CASES_H

#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include "engines.h"

// A test of several cases that holds on all engines:
//
//     using ThingCases = CasesOnEachEngine<SomeTest, Case>;    // SomeTest(Engine engine)
//     TEST_P(ThingCases, DoesSomething) { ... TheCase() ... }
//     INSTANTIATE_TEST_SUITE_P(Of, ThingCases, OnEachEngineOf(testing::ValuesIn(kCases)),
//                              NamedWithEngine([](const Case& some) { return some.name; }));
template <typename Fixture, typename Case>
class CasesOnEachEngine : public Fixture,
                          public testing::WithParamInterface<std::tuple<Engine, Case>> {
  protected:
    using Parameters = testing::WithParamInterface<std::tuple<Engine, Case>>;

    CasesOnEachEngine() : Fixture(std::get<Engine>(Parameters::GetParam())) {}

    static const Case& TheCase() { return std::get<1>(Parameters::GetParam()); }
};

template <typename Cases>
auto OnEachEngineOf(const Cases& cases) {
    return testing::Combine(testing::Values(Engine::Sqlite, Engine::Postgres), cases);
}

// The name of a test: that of its case, which `nameOf` tells, and the engine.
template <typename NameOf>
auto NamedWithEngine(NameOf nameOf) {
    return [nameOf](const auto& info) {
        return std::string(nameOf(std::get<1>(info.param))) + "_" +
               testing::PrintToString(std::get<Engine>(info.param));
    };
}

#endif
