#ifndef TESTS_TOOL_NASTY_SOURCE_H
#define TESTS_TOOL_NASTY_SOURCE_H

#include <fmt/format.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include "compared_load.h"
#include "tool/commands/check_command.h"

namespace tool {

inline constexpr const char* kNastySchema = R"(record_types:
  user:
    key: [login]
    fields:
      login: {type: text, max_length: 20, required: true}
      email: {type: text, unique: true}
      first: {type: reference, to: bug}
  bug:
    prefix: BUG
    states: [NEW, OPEN, CLOSED]
    duplicate_state: CLOSED
    fields:
      number: {type: integer, unique: true}
      title: {type: text, max_length: 30, required: true}
      mail: {type: text, unique: true}
      votes: {type: integer}
      owner: {type: reference, to: user}
      parent: {type: reference, to: bug}
      cause: {type: reference, to: bug}
      others: {type: reference_list, to: bug}
      files: {type: attachments}
      log: {type: history}
)";

inline constexpr const char* kNastyUpsert =
    "<duplicate_id name=\"twin_of\"/><updaterecord name=\"TRUE\"/><updateinsert name=\"TRUE\"/>"
    "<importstate name=\"TRUE\"/><record_reference_mapping_list>"
    "<mapping target_field=\"owner\" reference_field=\"email\"/>"
    "<mapping target_field=\"parent\" reference_field=\"number\"/>"
    "<mapping target_field=\"others\" reference_field=\"number\"/>"
    "<mapping target_field=\"first\" reference_field=\"number\"/>"
    "<mapping target_field=\"cause\" reference_field=\"title\"/>"
    "</record_reference_mapping_list>";

// A source that is as hard on the order of things as can be, its outcome, and what check foretells
// of it.
class NastySource : public ComparedLoad {
  public:
    explicit NastySource(Engine engine) : ComparedLoad(engine, kNastySchema) {
        for (const char* const name : {"file0", "file1"}) {
            m_folder.Write(name, std::string("content of ") + name);
        }
    }

    std::vector<std::string> Sources() {
        return {Configuration("1.xml", "record", "bug", "number", kNastyUpsert),
                Records("1-data.xml", Bugs()),
                Configuration("2.xml", "record", "user", "login", kNastyUpsert),
                Records("2-data.xml", Users()),
                Configuration("3.xml", "history", "bug", "number"),
                Records("3-data.xml", Histories()),
                Configuration("4.xml", "attachments", "bug", "number"),
                Records("4-data.xml", Attachments()),
                Configuration("5.xml", "record", "bug", "number",
                              std::string("<replacereflist name=\"TRUE\"/>") + kNastyUpsert),
                Records("5-data.xml", Changes())};
    }

    // All that check tells.
    std::string Check() {
        m_options.database = m_database;
        m_options.sources = Sources();
        m_options.report = m_folder.Path() / "foretold.json";
        m_options.attachments = m_folder.Path();
        std::ostringstream out;
        const int code = RunCheck(m_options, out, out);
        const std::string told = WithoutRates(out.str() + WithoutChance(Foretelling()));
        return fmt::format("{}\n{}", code, WithoutPlaces(told));
    }
    // Of that, numbers and rejected records; and how many groups workers had done.
    std::string Foretold() { return WithoutPlaces(Outcome(Foretelling())); }
    std::uint64_t ForetoldAhead() { return GroupsAhead(Foretelling()); }
    std::string Came() const { return WithoutPlaces(Outcome(Report())); }

  private:
    std::string Foretelling() { return ContentOf(m_folder.Path() / "foretold.json"); }

    // A report without losses, of which check finds more.
    static std::string Outcome(const std::string& report) {
        const std::string outcome = WithoutChance(report);
        const std::size_t losses = outcome.find("],\"losses\"");
        const std::size_t warnings = outcome.find("],\"warnings\"");
        return outcome.substr(0, std::min(losses, warnings));
    }

    static Fields Bug(const std::string& number, const Fields& more = {}) {
        Fields fields = {{"number", number}};
        bool hasTitle = false;
        for (const auto& field : more) {
            hasTitle = hasTitle || field.first == "title";
        }
        if (!hasTitle) {
            fields.emplace_back("title", "bug " + number);
        }
        fields.insert(fields.end(), more.begin(), more.end());
        return fields;
    }
    static Fields Bug(int number, const Fields& more = {}) {
        return Bug(std::to_string(number), more);
    }

    // Long stretches of plain records, of which workers do most, and odd ones between.
    static std::vector<Fields> Bugs() {
        std::vector<Fields> bugs;
        const auto add = [&bugs](const Fields& bug) { bugs.push_back(bug); };
        const auto plain = [&bugs](int from, int count) {
            for (int i = from; i < from + count; ++i) {
                bugs.push_back(Bug(i));
            }
        };
        plain(1000, 20);
        for (int i = 100; i < 118; ++i) {  // each refers to the next one
            add(Bug(i, {{"parent", std::to_string(i + 1)}}));
        }
        plain(1020, 12);
        add(Bug(118));                     // the last of them
        for (int i = 200; i < 215; ++i) {  // each refers to the one before
            add(Bug(i, {{"parent", std::to_string(i == 200 ? 118 : i - 1)},
                        {"others", fmt::format("{},{}", i == 200 ? 1000 : i - 1, 1001)}}));
        }
        for (int i = 0; i < 5; ++i) {  // the same id
            add(Bug(300, {{"title", fmt::format("again {}", i)}, {"votes", std::to_string(i)}}));
            plain(1040 + 4 * i, 4);
        }
        add(Bug(310, {{"title", std::string(31, 'x')}}));  // refused, and others of its id
        add(Bug(310, {{"title", "second"}}));
        add(Bug(310, {{"state", "LOST"}}));
        add(Bug(310, {{"owner", "e9"}}));  // waits for ever, and others behind it
        plain(1060, 12);
        add(Bug(310, {{"title", "behind"}}));
        add(Bug(311, {{"owner", "e1"}}));  // waits for a user
        add(Bug(311, {{"title", "after e1"}, {"state", "OPEN"}}));
        add(Bug(312, {{"owner", "e4"}, {"parent", "311"}}));
        add(Bug(320, {{"owner", "e3"}}));  // whose user refers to it
        add(Bug(499, {{"cause", "dup"}}));
        plain(1080, 6);
        add(Bug(500, {{"title", "dup"}}));
        add(Bug(501, {{"cause", "dup"}}));
        plain(1090, 6);
        add(Bug(502, {{"title", "dup"}}));
        add(Bug(503, {{"cause", "dup"}}));  // there are two now
        add(Bug(502, {{"title", "no longer"}}));
        add(Bug(504, {{"cause", "dup"}}));
        add(Bug(400, {{"mail", "a"}}));
        add(Bug(401, {{"mail", "b"}}));
        plain(1100, 12);
        add(Bug(400, {{"mail", "b"}}));  // is taken
        add(Bug(400, {{"mail", "t"}}));
        add(Bug(401, {{"mail", "a"}}));
        add(Bug(400, {{"mail", "b"}}));
        add(Bug(402, {{"mail", "a"}}));  // is taken
        add(Bug("7"));
        plain(1120, 9);
        add(Bug("007", {{"title", "the same"}}));
        add(Bug("8", {{"parent", "0007"}}));
        add(Bug("09", {{"parent", "010"}}));  // comes later
        add(Bug("10"));
        for (int i = 600; i < 606; ++i) {  // each a duplicate of the next one
            add(Bug(i, {{"twin_of", std::to_string(i + 1)}}));
        }
        plain(1130, 9);
        add(Bug(606, {{"twin_of", "007"}}));
        add(Bug(610, {{"twin_of", "611"}}));  // a circle
        add(Bug(611, {{"twin_of", "612"}}));
        add(Bug(612, {{"twin_of", "610"}}));
        add(Bug(613));
        add(Bug(613, {{"twin_of", "613"}}));
        add(Bug(614));
        add(Bug(615, {{"twin_of", "614"}}));
        add(Bug(614, {{"twin_of", "615"}}));
        AddRejects(bugs);
        plain(1140, 30);
        return bugs;
    }

    static void AddRejects(std::vector<Fields>& bugs) {
        bugs.push_back(Bug(700, {{"votes", "many"}}));
        bugs.push_back(Bug(701, {{"colour", "red"}}));
        bugs.push_back(Bug(702, {{"title", "&nosuch;"}}));
        bugs.push_back(Bug(703, {{"title", ""}}));
        bugs.push_back(Bug(704, {{"state", "LOST"}}));
        bugs.push_back(Bug(705, {{"parent", "99999"}}));
        bugs.push_back(Bug(706, {{"others", "1000,99999,1001"}}));
        bugs.push_back(Bug(707, {{"parent", "707"}}));
        bugs.push_back(Bug("many"));
        bugs.push_back({{"title", "no number"}});
        bugs.push_back(Bug(708, {{"files", "1\nmissing\n0\n"}}));
        bugs.push_back(Bug(709, {{"log", "x\tnever\tu\tv\tw\tx"}}));
    }

    static std::vector<Fields> Users() {
        std::vector<Fields> users;
        for (int i = 0; i < 20; ++i) {
            users.push_back({{"login", fmt::format("u{}", i)}, {"email", fmt::format("e{}", i)}});
        }
        users[2].emplace_back("first", "312");  // which waits for e4
        users[3].emplace_back("first", "320");  // which waits for e3
        users[5].emplace_back("first", "007");
        users[9] = {{"login", "u9"}, {"email", std::string("e1")}};  // is taken
        users.push_back({{"login", "u6"}, {"email", "e7"}});         // is taken
        users.push_back({{"login", std::string(21, 'u')}});
        users.push_back({{"login", "u6"}, {"email", "e66"}});
        return users;
    }

    static std::vector<Fields> Histories() {
        std::vector<Fields> histories;
        for (int i = 0; i < 40; ++i) {
            const int day = 1 + i * 7 % 28;
            const int number = i % 3 == 0 ? 300 : 1000 + i;
            histories.push_back(
                {{"number", std::to_string(number)},
                 {"history",
                  fmt::format("c{}\t2020-01-{:02} 00:00:00\tu\tmodify\tNEW\tOPEN", i, day)}});
        }
        histories.push_back({{"number", "300"}, {"history", "x\tnever\tu\tv\tw\tx"}});
        histories.push_back({{"number", "310"}, {"history", "x\t2020-01-01 00:00:00\tu\tv\tw\tx"}});
        histories.push_back(
            {{"number", "88888"}, {"history", "x\t2020-01-01 00:00:00\tu\tv\tw\tx"}});
        return histories;
    }

    static std::vector<Fields> Attachments() {
        std::vector<Fields> attachments;
        for (int i = 0; i < 12; ++i) {
            attachments.push_back({{"number", std::to_string(i % 2 == 0 ? 300 : 1000 + i)},
                                   {"files", fmt::format("1\nfile{}\n0\nof {}", i % 2, i)}});
        }
        attachments.push_back({{"number", "1002"}, {"files", "1\nmissing\n0\n"}});
        return attachments;
    }

    static std::vector<Fields> Changes() {
        std::vector<Fields> changes;
        for (int i = 1000; i < 1060; ++i) {
            changes.push_back(Bug(i, {{"votes", std::to_string(i)}, {"owner", "e2"}}));
        }
        changes.push_back(Bug(201, {{"others", "1000"}}));
        changes.push_back(Bug(202, {{"others", "7,99999"}}));
        changes.push_back(Bug(300, {{"log", "z\t2020-02-01 00:00:00\tu\tmodify\tNEW\tOPEN"}}));
        changes.push_back(Bug(1, {{"parent", "2"}}));
        changes.push_back(Bug(2, {{"parent", "1"}}));  // a circle
        return changes;
    }
};

}  // namespace tool

#endif
