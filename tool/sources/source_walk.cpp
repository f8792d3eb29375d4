#include "tool/sources/source_walk.h"

#include <string_view>
#include <utility>

#include "tool/guarded/guarded_text.h"
#include "tool/process/interrupt.h"
#include "tool/sources/source_checks.h"

namespace tool {

SourceWalk::SourceWalk(const SourceList& sources, WalkOptions options)
    : m_sources(sources), m_options(std::move(options)) {}

WalkStep SourceWalk::Next() {
    return m_inData ? NextRecord() : NextSource();
}

WalkStep SourceWalk::NextSource() {
    if (m_next == m_sources.Sources().size()) {
        return WalkStep::End;
    }
    if (Interrupted() != 0) {
        return WalkStep::Stopped;
    }
    const Source& listed = m_sources.Sources()[m_next++];
    m_source.reset();
    m_file.reset();
    if (listed.made != nullptr) {
        m_source = listed.made->Open();
    } else {
        m_file.emplace(listed.path, listed.name);
        m_source = OpenRecordSource(*m_file, Reading());
    }
    m_inData = !m_source->IsConfiguration();
    if (m_inData) {
        return WalkStep::Data;
    }
    m_packet = m_source->ReadConfiguration();
    m_configuration.Apply(m_packet, SourceName());
    m_bytesBefore += listed.size;
    return WalkStep::Configuration;
}

WalkStep SourceWalk::NextRecord() {
    if (Interrupted() != 0) {
        return WalkStep::Stopped;
    }
    if (m_source->NextRecord(m_record)) {
        m_record.guarded = IsGuarded();
        return WalkStep::Record;
    }
    LeaveSource();
    return WalkStep::DataEnd;
}

void SourceWalk::LeaveSource() {
    if (std::exchange(m_inData, false)) {
        m_bytesBefore += Listed().size;
    }
}

void SourceWalk::RequireUnchanged() const {
    if (m_file) {
        m_file->RequireUnchanged();
    }
}

SourceReading SourceWalk::Reading() const {
    SourceReading reading;
    reading.limits = m_options.limits;
    reading.unseen = [this](const UnseenRecord& unseen) { m_options.unseen(unseen, SourceName()); };
    reading.frame = [this](const FrameDefect& defect) { m_options.frame(defect, SourceName()); };
    return reading;
}

void SourceWalk::RequireUsableData() const {
    RequireConfiguration(m_configuration, SourceName());
    if (m_configuration.Data() == ImportedData::Attachments) {
        RequireAttachments(m_options.attachments, SourceName());
    }
}

recorddb::journal::JournalKey SourceWalk::Key(const recorddb::schema::RecordType& type) const {
    const auto isField = [&type](std::string_view name) { return type.FindField(name) != nullptr; };
    return {m_file ? m_file->Sha256() : Listed().made->Sha256(),
            m_configuration.Fingerprint(isField)};
}

std::string SourceWalk::IdIn(std::string_view raw) const {
    std::string id = m_source->ValueIn(raw, m_configuration.OriginalId()).value_or("");
    return IsGuarded() ? Restored(id) : id;
}

WholePacket SourceWalk::ReadWhole() const {
    if (!m_file) {
        return Listed().made->Open()->ReadWhole();
    }
    SourceReading reading;
    reading.limits = m_options.limits;
    return OpenRecordSource(*m_file, std::move(reading))->ReadWhole();
}

std::uint64_t SourceWalk::BytesRead() const {
    return m_bytesBefore + (m_inData ? m_source->BytesRead() : 0);
}

}  // namespace tool
