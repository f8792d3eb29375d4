#include "platform/xmlstream/ixmlstream.h"

#include "platform/foundation/obx_assert.h"
#include "platform/xmlstream/expat_reader.h"

namespace {

const char16_t* Describe(int type) {
    switch (type) {
        case IXmlStream::kStartTag:
            return u"a start tag";
        case IXmlStream::kEndTag:
            return u"an end tag";
        case IXmlStream::kCharData:
            return u"character data";
        default:
            return u"the end";
    }
}

}  // namespace

class IXmlStream::Impl {
  public:
    explicit Impl(std::istream& input) : m_reader(input) {}

    int NextType() {
        const TokenQueue::Token* token = m_reader.Peek();
        return token == nullptr ? kEnd : token->type;
    }

    const TokenQueue::Token* Peek() { return m_reader.Peek(); }

    // The next token, which is the caller's until Pop, and must be of that type.
    TokenQueue::Token& Take(int type) {
        const int next = NextType();
        if (next != type) {
            Obx_String what;
            what.Format(u"expected %s, found %s", Describe(type), Describe(next));
            throw new XmlException(XmlException::Code::kUnexpectedToken, m_reader.Position(), what);
        }
        return *m_reader.Peek();
    }

    void Pop() { m_reader.Pop(); }

  private:
    ExpatReader m_reader;
};

IXmlStream::IXmlStream(std::istream& input, bool validate, bool expandEntities)
    : m_impl(std::make_unique<Impl>(input)) {
    Obx_Assert(!validate && !expandEntities, u"the flags of an XML stream are reserved");
}

IXmlStream::~IXmlStream() = default;

int IXmlStream::GetNextTokenType() {
    return m_impl->NextType();
}

int IXmlStream::GetNextTokenName(Obx_String& name) {
    const TokenQueue::Token* token = m_impl->Peek();
    if (token == nullptr || token->type == kCharData) {
        return 0;
    }
    name = token->text;
    return 1;
}

IXmlStream& IXmlStream::operator>>(XmlSTag& tag) {
    TokenQueue::Token& token = m_impl->Take(kStartTag);
    tag.Take(std::move(token.text), token.attributes);
    m_impl->Pop();
    return *this;
}

IXmlStream& IXmlStream::operator>>(XmlETag& tag) {
    tag = XmlETag(std::move(m_impl->Take(kEndTag).text));
    m_impl->Pop();
    return *this;
}

IXmlStream& IXmlStream::operator>>(XmlCharData& data) {
    data = XmlCharData(std::move(m_impl->Take(kCharData).text));
    m_impl->Pop();
    return *this;
}
