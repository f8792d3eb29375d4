#include "tool/losses/loss_finder.h"

#include <algorithm>

#include "tool/losses/configuration_losses.h"

namespace tool {

void LossFinder::Configure(const std::string& packet, const std::string& source,
                           const ImportConfiguration& configuration) {
    m_configuration = configuration;
    FindConfigurationLosses(packet, source, m_configuration, m_schema, m_take);
    m_examiner.Configure(configuration);
}

void LossFinder::BeginData(const std::string& source) {
    m_source = source;
    m_examined = 0;
    if (!m_configuration.Received()) {
        m_take({LossKind::NoConfiguration, source, 0, 0, "", "",
                "no configuration packet comes before these records, and nothing of them is "
                "imported; name it before them on the command line"});
    }
}

void LossFinder::Examine(const SourceRecord& record) {
    // Handed over together, since a look-up that fails is done again.
    std::vector<Loss> losses;
    m_examiner.Examine(record, m_source, [&](const Loss& loss) { losses.push_back(loss); });
    TakeOver(losses);
}

void LossFinder::TakeOver(const std::vector<Loss>& losses) {
    ++m_examined;
    for (const Loss& loss : losses) {
        m_take(loss);
    }
}

void LossFinder::EndData() {
    if (m_examined == 0) {
        m_take({LossKind::EmptyPacket, m_source, 0, 0, "", "", "the packet holds no record"});
    }
}

Loss LossOf(const UnseenRecord& unseen, const std::string& source) {
    return {LossKind::UnseenRecord,
            source,
            0,
            unseen.line,
            "",
            "",
            "not read as a record: " + unseen.text};
}

Loss LossOf(const FrameDefect& defect, const std::string& source) {
    const bool isCut = defect.kind == FrameDefectKind::CutShort;
    return {isCut ? LossKind::CutShort : LossKind::OutsideRecords,
            source,
            0,
            defect.line,
            "",
            "",
            defect.text + (isCut ? "; records may be missing, so export it anew"
                                 : "; see that no record is missing there")};
}

std::optional<Loss> LossOf(const MapFinding& finding, const std::string& map) {
    if (finding.weight != FindingWeight::Loss) {
        return std::nullopt;
    }
    const auto* const kind =
        std::find_if(kLossKinds.begin(), kLossKinds.end(),
                     [&](LossKind candidate) { return LossKindName(candidate) == finding.kind; });
    return Loss{*kind, map, 0, 0, "", "", finding.text};
}

}  // namespace tool
