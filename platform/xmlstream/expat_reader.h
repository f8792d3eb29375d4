#ifndef PLATFORM_XMLSTREAM_EXPAT_READER_H
#define PLATFORM_XMLSTREAM_EXPAT_READER_H

#include <cstddef>
#include <exception>
#include <istream>
#include <string_view>

#include "platform/xmlstream/expat_pool.h"
#include "platform/xmlstream/token_queue.h"
#include "platform/xmlstream/xmlexception.h"

// Reads the tokens of an XML fragment from a stream, no further than asked. expat runs until it has
// met a tag, is stopped there, and goes on when the next token is asked for.
class ExpatReader {
  public:
    // Reads nothing yet. `input` must outlive the reader.
    explicit ExpatReader(std::istream& input);
    ~ExpatReader();
    ExpatReader(const ExpatReader&) = delete;
    ExpatReader& operator=(const ExpatReader&) = delete;

    // The next token, which stays the reader's until Pop; null at the end of the input. Throws an
    // XmlException*, after which the reader must not be used.
    TokenQueue::Token* Peek();

    // Drops the token that Peek returned.
    void Pop() { m_queue.Pop(); }

    // Where the reader stands: behind the token that Peek returned last.
    XmlPosition Position() const;

  private:
    struct Callbacks;

    void OpenFragment();
    void StepOverProlog(std::string_view& head);
    void ReadOn();
    int Fill(char* buffer, std::size_t size);
    void ParseNextChunk();
    void Settle(int status);
    void Finish();
    [[noreturn]] void Fail(XmlException::Code code, const Obx_String& what);
    [[noreturn]] void FailOnExpatError();

    std::istream& m_input;
    PooledExpatParser m_parser;
    TokenQueue m_queue;
    XmlPosition m_start;
    std::size_t m_chunkSize;
    std::size_t m_bytesRead = 0;
    std::exception_ptr m_callbackFailure;
    bool m_opened = false;
    bool m_suspended = false;
    bool m_finished = false;
    bool m_failed = false;
    bool m_chunkHadEvents = false;
};

#endif
