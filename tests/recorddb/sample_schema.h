#ifndef TESTS_RECORDDB_SAMPLE_SCHEMA_H
#define TESTS_RECORDDB_SAMPLE_SCHEMA_H

// A schema with every type of field; `order` and `Group` are words of SQL.
constexpr const char* kSampleSchema = R"(record_types:
  user:
    key: [login]
    fields:
      login: {type: text, max_length: 60, required: true}
      name: {type: text}
  order:
    key: [Group, number]
    fields:
      Group: {type: reference, to: user}
      number: {type: integer}
      dated: {type: datetime, unique: true}
  bug:
    prefix: BUG
    states: [NEW, ASSIGNED, CLOSED]
    duplicate_state: CLOSED
    fields:
      source_id: {type: text, unique: true}
      title: {type: text, max_length: 255, required: true}
      description: {type: multiline}
      severity: {type: choice, choices: [minor, major]}
      owner: {type: reference, to: USER}
      watchers: {type: reference_list, to: user}
      files: {type: attachments}
      log: {type: history}
)";

#endif
