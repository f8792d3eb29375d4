#ifndef PLATFORM_XMLSTREAM_EXPAT_POOL_H
#define PLATFORM_XMLSTREAM_EXPAT_POOL_H

struct XML_ParserStruct;

// An expat parser for UTF-8, lent by the calling thread's pool. The importer opens a stream for
// every record, and making a parser costs more than reading a record: parsers are reset and used
// again.
class PooledExpatParser {
  public:
    // Throws std::bad_alloc when there is no memory for a parser.
    PooledExpatParser();
    ~PooledExpatParser();
    PooledExpatParser(const PooledExpatParser&) = delete;
    PooledExpatParser& operator=(const PooledExpatParser&) = delete;

    XML_ParserStruct* Get() const { return m_parser; }

    // The parser is freed instead of being used again. For a parser that has grown: it never gives
    // back memory while it lives.
    void DoNotReuse() { m_reuse = false; }

  private:
    XML_ParserStruct* m_parser;
    bool m_reuse = true;
};

#endif
