#include "platform/xmlstream/expat_reader.h"

#include <expat.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "platform/foundation/obx_assert.h"
#include "platform/foundation/out_of_memory.h"
#include "platform/xmlstream/plain_reader.h"

namespace {

// The importer reads one record of a packet through each stream, and records are smaller than this:
// what is read beyond the record is wasted.
constexpr std::size_t kSmallestChunk = 2048;

// A value that goes on over many chunks is read in larger ones. expat looks at an incomplete tag or
// comment again from its beginning whenever more of it comes, so chunks in which nothing was
// complete must go on growing to keep the work linear. Text is passed on as it comes.
constexpr std::size_t kLargestChunkOfText = std::size_t{64} * 1024;
constexpr std::size_t kLargestChunk = std::size_t{256} * 1024 * 1024;

// Plain markup is read in memory up to so many bytes.
constexpr std::size_t kLargestHead = std::size_t{64} * 1024;

// A parser that has read more than this, or has met deeper elements, is not kept.
constexpr std::size_t kMostBytesForReuse = std::size_t{256} * 1024;
constexpr std::size_t kDeepestForReuse = 1000;

// Deeper than any real packet, and low enough that the parser's stack of open elements stays small.
constexpr std::size_t kDeepestElement = 50000;

// expat reads documents. Within an element that it is given first, it reads whatever may stand in
// an element's content: text, several elements, nothing at all. The line feed lets the input begin
// at the first column.
constexpr std::string_view kSyntheticRoot = "<fragment>\n";
constexpr long kLinesBeforeInput = 1;

constexpr std::string_view kReplacementCharacter = "\xEF\xBF\xBD";

bool BeginsWithDeclaration(std::string_view text) {
    constexpr std::string_view kOpening = "<?xml";
    constexpr std::string_view kWhiteSpace = " \t\r\n";
    return text.starts_with(kOpening) && text.size() > kOpening.size() &&
           kWhiteSpace.find(text[kOpening.size()]) != std::string_view::npos;
}

// Whether the byte continues a UTF-8 character that another byte has begun.
bool ContinuesCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

// How many bytes at the beginning of the text are the rest of a character that was cut.
std::size_t RestOfCutCharacter(std::string_view text) {
    constexpr std::size_t kMostContinuingBytes = 3;
    const std::string_view first = text.substr(0, kMostContinuingBytes);
    return static_cast<std::size_t>(
        std::find_if_not(first.begin(), first.end(), ContinuesCharacter) - first.begin());
}

XmlPosition Advance(XmlPosition position, std::string_view text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\n' || (text[i] == '\r' && !text.substr(i).starts_with("\r\n"))) {
            ++position.line;
            position.column = 1;
        } else if (!ContinuesCharacter(text[i]) && text[i] != '\r') {
            ++position.column;
        }
    }
    return position;
}

// Whether expat stopped after a "<!" that begins neither a comment nor a CDATA section.
bool StandsInDeclaration(XML_Parser parser) {
    int offset = 0;
    int size = 0;
    const char* context = XML_GetInputContext(parser, &offset, &size);
    return context != nullptr && offset >= 2 && offset < size &&
           std::string_view(context, static_cast<std::size_t>(size))
               .substr(static_cast<std::size_t>(offset) - 2)
               .starts_with("<!");
}

// How much of the input expat has told of when this event is over.
long EndOfEvent(XML_Parser parser) {
    return static_cast<long>(XML_GetCurrentByteIndex(parser)) + XML_GetCurrentByteCount(parser);
}

}  // namespace

// The handlers that expat calls. Exceptions must not pass through C code, so they are kept until
// expat returns.
struct ExpatReader::Callbacks {
    template <typename Event>
    static void Take(void* reader, Event event) {
        auto& self = *static_cast<ExpatReader*>(reader);
        NoteEvent(reader);
        self.m_chunkLimit = kLargestChunkOfText;
        // The end of an empty element is reported even if its start has already stopped expat.
        if (self.m_callbackFailure || self.m_refused) {
            return;
        }
        try {
            event(self);
        } catch (...) {
            self.m_callbackFailure = std::current_exception();
        }
        if (self.m_callbackFailure || self.m_refused) {
            XML_StopParser(self.m_expat->Get(), XML_FALSE);
        }
    }

    static void StartTag(void* reader, const char* name, const char** attributes) {
        Take(reader, [=](ExpatReader& self) {
            if (self.m_queue.Depth() >= kDeepestElement) {
                self.Refuse(XmlException::Code::kTooDeep, u"elements are nested too deeply");
                return;
            }
            self.m_queue.AddStartTag(name, attributes);
            self.m_deepest = std::max(self.m_deepest, self.m_queue.Depth());
            XML_StopParser(self.m_expat->Get(), XML_TRUE);
        });
    }

    static void EndTag(void* reader, const char* name) {
        Take(reader, [=](ExpatReader& self) {
            if (self.m_queue.Depth() == 0) {
                self.Refuse(XmlException::Code::kMalformed, u"an end tag without its start tag");
                return;
            }
            self.m_queue.AddEndTag(name);
            XML_StopParser(self.m_expat->Get(), XML_TRUE);
        });
    }

    // The default handler gets text as it is written, escapes in place, because there is no handler
    // for character data.
    static void Text(void* reader, const char* text, int length) {
        Take(reader, [=](ExpatReader& self) {
            self.m_queue.AddText({text, static_cast<std::size_t>(length)});
        });
    }

    // Without handlers of their own, these would reach the default handler and count as text.
    static void Comment(void* reader, const char* /*text*/) { NoteEvent(reader); }
    static void Instruction(void* reader, const char* /*target*/, const char* /*data*/) {
        NoteEvent(reader);
    }
    static void CdataBorder(void* reader) { NoteEvent(reader); }

    static void NoteEvent(void* reader) {
        auto& self = *static_cast<ExpatReader*>(reader);
        self.m_told = EndOfEvent(self.m_expat->Get());
    }
};

ExpatReader::ExpatReader(std::istream& input)
    : m_input(input), m_chunkSize(kSmallestChunk), m_chunkLimit(kLargestChunk) {}

ExpatReader::~ExpatReader() {
    if (m_expat && (m_bytesRead > kMostBytesForReuse || m_deepest > kDeepestForReuse)) {
        m_expat->DoNotReuse();
    }
}

TokenQueue::Token* ExpatReader::ReadNext() {
    Obx_Assert(m_state != State::kFailed, u"an XML stream is not used after it has failed");
    try {
        while (m_queue.IsEmpty() && m_state != State::kFinished) {
            if (m_refused) {
                throw new XmlException(m_refused->code, m_refused->position, m_refused->what);
            }
            ReadOn();
        }
    } catch (...) {
        m_state = State::kFailed;
        // What was read before the failure cannot be had any more either.
        m_queue = TokenQueue();
        throw;
    }
    return m_queue.IsEmpty() ? nullptr : &m_queue.Front();
}

XmlPosition ExpatReader::Position() {
    if (m_state == State::kPlain) {
        const bool isAhead = !m_queue.IsEmpty();
        BeginWithExpat();
        SkipPopped();
        while (isAhead && m_queue.IsEmpty() && !m_refused) {
            ReadOn();
        }
    }
    return PlaceOfExpat();
}

XmlPosition ExpatReader::PlaceOfExpat() const {
    if (!m_expat) {
        return m_start;
    }
    const auto line = static_cast<long>(XML_GetCurrentLineNumber(m_expat->Get()));
    const auto column = static_cast<long>(XML_GetCurrentColumnNumber(m_expat->Get()));
    const bool onFirstLine = line == kLinesBeforeInput + 1;
    return {line - kLinesBeforeInput - 1 + m_start.line,
            column + (onFirstLine ? m_start.column : 1)};
}

void ExpatReader::ReadOn() {
    switch (m_state) {
        case State::kUnopened:
            m_state = State::kPlain;
            FillHead();
            break;
        case State::kPlain:
            ReadPlain();
            break;
        case State::kSuspended:
            Settle(XML_ResumeParser(m_expat->Get()));
            break;
        default:
            ParseNextChunk();
            break;
    }
}

void ExpatReader::ReadPlain() {
    PlainReader::Result result = PlainReader::ReadTag(m_head, m_plain, m_queue);
    while (result == PlainReader::Result::kIncomplete && m_head.size() < kLargestHead &&
           FillHead()) {
        result = PlainReader::ReadTag(m_head, m_plain, m_queue);
    }
    if (result == PlainReader::Result::kRead) {
        m_headChunk = 0;
    } else {
        BeginWithExpat();
        SkipPopped();
    }
}

// Reads more of the input, in the chunks in which expat reads it; false when there is none.
bool ExpatReader::FillHead() {
    const std::size_t size = m_head.size();
    m_headChunk = size == 0 ? kSmallestChunk : 2 * std::max(m_headChunk, kSmallestChunk);
    m_head.resize(size + m_headChunk);
    const auto count = static_cast<std::size_t>(Read(m_head.data() + size, m_headChunk));
    m_head.resize(size + count);
    return count > 0;
}

// Begins again from the front with expat.
void ExpatReader::BeginWithExpat() {
    m_queue = TokenQueue();
    std::string_view first = std::string_view(m_head).substr(0, kSmallestChunk);
    m_headGiven = first.size();
    StepOverProlog(first);
    if (m_refused) {
        return;
    }
    OpenFragment();
    Settle(XML_Parse(m_expat->Get(), first.data(), static_cast<int>(first.size()), XML_FALSE));
}

// What was plain can neither fail nor make other tokens.
void ExpatReader::SkipPopped() {
    for (std::size_t left = m_popped; left > 0; --left) {
        while (m_queue.IsEmpty()) {
            Obx_Assert(!m_refused && m_state != State::kFinished, u"plain markup is well-formed");
            ReadOn();
        }
        m_queue.Pop();
    }
}

void ExpatReader::OpenFragment() {
    XML_Parser parser = m_expat.emplace().Get();
    m_state = State::kReading;
    const int opened = XML_Parse(parser, kSyntheticRoot.data(),
                                 static_cast<int>(kSyntheticRoot.size()), XML_FALSE);
    if (opened != XML_STATUS_OK) {
        ThrowOutOfMemory();
    }
    m_told = static_cast<long>(kSyntheticRoot.size());
    XML_SetUserData(parser, this);
    XML_SetElementHandler(parser, Callbacks::StartTag, Callbacks::EndTag);
    XML_SetDefaultHandler(parser, Callbacks::Text);
    XML_SetCommentHandler(parser, Callbacks::Comment);
    XML_SetProcessingInstructionHandler(parser, Callbacks::Instruction);
    XML_SetCdataSectionHandler(parser, Callbacks::CdataBorder, Callbacks::CdataBorder);
}

// Neither a byte order mark nor a declaration may stand within an element, where expat sees the
// input. What the declaration says is of no interest: the input is UTF-8 whatever it names. A
// fragment may begin anywhere, also within a character; what is left of that is text.
void ExpatReader::StepOverProlog(std::string_view& head) {
    if (const std::size_t rest = RestOfCutCharacter(head); rest > 0) {
        m_queue.AddText(kReplacementCharacter);
        head.remove_prefix(rest);
        ++m_start.column;
        return;
    }
    if (head.starts_with(PlainReader::kByteOrderMark)) {
        head.remove_prefix(PlainReader::kByteOrderMark.size());
    }
    if (!BeginsWithDeclaration(head)) {
        return;
    }
    constexpr std::string_view kClosing = "?>";
    const std::size_t end = head.find(kClosing);
    if (end == std::string_view::npos) {
        Refuse(XmlException::Code::kMalformed, u"the XML declaration is not closed");
        return;
    }
    m_start = Advance(m_start, head.substr(0, end + kClosing.size()));
    head.remove_prefix(end + kClosing.size());
}

// For expat: what was read before, then the rest.
int ExpatReader::Fill(char* buffer, std::size_t size) {
    const std::size_t count = std::min(size, m_head.size() - m_headGiven);
    if (count == 0) {
        std::string().swap(m_head);
        m_headGiven = 0;
        return Read(buffer, size);
    }
    std::memcpy(buffer, m_head.data() + m_headGiven, count);
    m_headGiven += count;
    return static_cast<int>(count);
}

int ExpatReader::Read(char* buffer, std::size_t size) {
    m_input.read(buffer, static_cast<std::streamsize>(size));
    if (m_input.bad()) {
        throw new XmlException(XmlException::Code::kUnreadable, PlaceOfExpat(),
                               u"the input cannot be read");
    }
    const auto count = static_cast<std::size_t>(m_input.gcount());
    m_bytesRead += count;
    return static_cast<int>(count);
}

void ExpatReader::ParseNextChunk() {
    void* buffer = XML_GetBuffer(m_expat->Get(), static_cast<int>(m_chunkSize));
    if (buffer == nullptr) {
        ThrowOutOfMemory();
    }
    const int length = Fill(static_cast<char*>(buffer), m_chunkSize);
    m_chunkLimit = kLargestChunk;
    Settle(XML_ParseBuffer(m_expat->Get(), length, length == 0 ? XML_TRUE : XML_FALSE));
}

void ExpatReader::Settle(int status) {
    m_state = status == XML_STATUS_SUSPENDED ? State::kSuspended : State::kReading;
    if (m_callbackFailure) {
        std::rethrow_exception(m_callbackFailure);
    }
    if (m_refused) {
        return;
    }
    if (status == XML_STATUS_ERROR) {
        Finish();
    } else if (m_state == State::kSuspended) {
        m_chunkSize = kSmallestChunk;
    } else {
        m_chunkSize = std::min(2 * m_chunkSize, m_chunkLimit);
    }
}

// The synthetic root is never closed, so the end of the input is an error to expat.
void ExpatReader::Finish() {
    if (XML_GetErrorCode(m_expat->Get()) != XML_ERROR_NO_ELEMENTS) {
        RefuseOnExpatError();
    } else if (m_queue.Depth() > 0) {
        Refuse(XmlException::Code::kMalformed,
               u"the element \"" + Obx_String::FromUtf8(m_queue.OpenName()) + u"\" is not closed");
    } else {
        m_state = State::kFinished;
        m_queue.Finish();
    }
}

void ExpatReader::RefuseOnExpatError() {
    const XML_Error error = XML_GetErrorCode(m_expat->Get());
    if (error == XML_ERROR_NO_MEMORY) {
        ThrowOutOfMemory();
    }
    Obx_String what = Obx_String::FromUtf8(XML_ErrorString(error));
    if (error == XML_ERROR_TAG_MISMATCH) {
        what = m_queue.Depth() == 0 ? Obx_String(u"an end tag without its start tag")
                                    : u"the end tag does not match the open element \"" +
                                          Obx_String::FromUtf8(m_queue.OpenName()) + u"\"";
    } else if (error == XML_ERROR_INVALID_TOKEN && StandsInDeclaration(m_expat->Get())) {
        what = u"a DOCTYPE or another declaration is not allowed";
    } else if (error == XML_ERROR_INVALID_TOKEN) {
        TakeTextBeforeSectionEnd();
    }
    Refuse(XmlException::Code::kMalformed, what);
}

// expat tells of text before all that it refuses, but for the end of a section that has no
// beginning.
void ExpatReader::TakeTextBeforeSectionEnd() {
    constexpr std::string_view end = "]]>";
    int offset = 0;
    int size = 0;
    const char* const context = XML_GetInputContext(m_expat->Get(), &offset, &size);
    const long untold = static_cast<long>(XML_GetCurrentByteIndex(m_expat->Get())) - m_told;
    if (context == nullptr || untold < 0 || untold > offset || offset == size) {
        return;
    }
    std::string_view text(context + offset - untold, static_cast<std::size_t>(untold) + 1);
    if (text.ends_with(end)) {
        text.remove_suffix(end.size());
        m_queue.AddText(text);
    }
}

// The text before the refused place comes first: what stands in front of a packet's first record
// may end in the rest of an element that was cut.
void ExpatReader::Refuse(XmlException::Code code, const Obx_String& what) {
    m_refused = Failure{code, PlaceOfExpat(), what};
    m_queue.Finish();
}
