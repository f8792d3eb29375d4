#ifndef PLATFORM_XMLSTREAM_EXPAT_READER_H
#define PLATFORM_XMLSTREAM_EXPAT_READER_H

#include <cstddef>
#include <exception>
#include <istream>
#include <optional>
#include <string>
#include <string_view>

#include "platform/xmlstream/expat_pool.h"
#include "platform/xmlstream/token_queue.h"
#include "platform/xmlstream/xmlexception.h"

// Reads the tokens of an XML fragment from a stream, no further than asked. Plain markup is read
// without expat, which costs less than half. Where that ends, or when a place is asked for, expat
// begins at the front, without the tokens that were taken already: it runs until it has met a tag,
// is stopped there, and goes on when the next token is asked for.
class ExpatReader {
  public:
    // Reads nothing yet. `input` must outlive the reader.
    explicit ExpatReader(std::istream& input);
    ~ExpatReader();
    ExpatReader(const ExpatReader&) = delete;
    ExpatReader& operator=(const ExpatReader&) = delete;

    // The next token, which stays the reader's until Pop; null at the end of the input. Throws an
    // XmlException* or std::bad_alloc; every later call then throws a CException*.
    TokenQueue::Token* Peek() { return m_queue.IsEmpty() ? ReadNext() : &m_queue.Front(); }

    // Drops the token that Peek returned.
    void Pop() {
        m_queue.Pop();
        ++m_popped;
    }

    // How far the input was understood: after the tag that Peek returned last. Character data is
    // complete only when the tag after it is known, so for it this is the place after that tag,
    // or where the input ended or was refused.
    XmlPosition Position();

  private:
    enum class State {
        kUnopened,   // nothing was read
        kPlain,      // what was read so far is plain
        kReading,    // expat has worked through what it was given
        kSuspended,  // expat was stopped at a tag
        kFinished,   // the input has ended
        kFailed,     // reading threw an exception
    };
    struct Callbacks;
    struct Failure {
        XmlException::Code code;
        XmlPosition position;
        Obx_String what;
    };

    TokenQueue::Token* ReadNext();
    void ReadOn();
    void ReadPlain();
    bool FillHead();
    void BeginWithExpat();
    void SkipPopped();
    void OpenFragment();
    void StepOverProlog(std::string_view& head);
    XmlPosition PlaceOfExpat() const;
    int Fill(char* buffer, std::size_t size);
    int Read(char* buffer, std::size_t size);
    void ParseNextChunk();
    void Settle(int status);
    void Finish();
    void RefuseOnExpatError();
    void TakeTextBeforeSectionEnd();
    // Notes a failure, which Peek throws once the text before it has been taken.
    void Refuse(XmlException::Code code, const Obx_String& what);

    std::istream& m_input;
    std::optional<PooledExpatParser> m_expat;
    TokenQueue m_queue;
    std::string m_head;           // what was read of the input before expat began
    std::size_t m_plain = 0;      // so much of it was plain
    std::size_t m_headChunk = 0;  // so much was read at last for a tag that is not complete
    std::size_t m_headGiven = 0;  // so much of the head has expat got
    std::size_t m_popped = 0;     // tokens
    XmlPosition m_start;
    std::size_t m_chunkSize;
    // How large the next chunk may be.
    std::size_t m_chunkLimit;
    std::size_t m_bytesRead = 0;
    std::size_t m_deepest = 0;
    long m_told = 0;  // bytes of what expat was given, up to the end of its last event
    std::optional<Failure> m_refused;
    std::exception_ptr m_callbackFailure;
    State m_state = State::kUnopened;
};

#endif
