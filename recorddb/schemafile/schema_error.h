#ifndef RECORDDB_SCHEMAFILE_SCHEMA_ERROR_H
#define RECORDDB_SCHEMAFILE_SCHEMA_ERROR_H

#include <stdexcept>
#include <string>

namespace recorddb::schema {

// What is wrong with a schema file, and where. what() reads "FILE:LINE:COLUMN: TEXT".
class SchemaError : public std::runtime_error {
  public:
    // Line and column count from 1; both are 0 when the file as a whole is meant.
    SchemaError(std::string file, int line, int column, std::string text);

    const std::string& File() const { return m_file; }
    int Line() const { return m_line; }
    int Column() const { return m_column; }
    const std::string& Text() const { return m_text; }

  private:
    std::string m_file;
    int m_line;
    int m_column;
    std::string m_text;
};

}  // namespace recorddb::schema

#endif
