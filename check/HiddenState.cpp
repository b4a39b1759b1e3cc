#include "HiddenState.h"

#include <utility>

#include "ChannelId.h"
#include "DaifType.h"

namespace zelct {

namespace {

// A channel's kind comes from its "type" text, compared lower-cased with the interface kinds'
// spellings; a text that matches none leaves the kind a channel is read with, and the text is
// written back as it came. The number itself is never written.
bool channelKindHidden(const Json::Value& text, Json::Value& kept) {
    if (!text.isString()) {
        return false;  // written back as a text, which shows it was changed
    }
    constexpr int kUnresolved = -1;
    DaifType probe;
    probe.setValue(kUnresolved);
    probe.setNameAndResolve(text.asString());
    if (probe.getValue() != kUnresolved) {
        return false;
    }
    kept = ChannelId(0).getType().getValue();
    return true;
}

std::vector<std::string> interfaceKindSpellings() {
    std::vector<std::string> spellings;
    for (std::size_t i = 0; DaifType::acceptedName(i) != nullptr; ++i) {
        spellings.emplace_back(DaifType::acceptedName(i));
    }
    return spellings;
}

}  // namespace

const std::vector<HiddenStateRule>& hiddenStateRules() {
    // clang-format off
    static const std::vector<HiddenStateRule> rules = {
        {"channel-id", "type", &channelKindHidden, &interfaceKindSpellings, "interface kinds", "any other text leaves the channel's kind as it was (auto, 12) and is written back as it came"},
    };
    // clang-format on
    return rules;
}

const HiddenStateRule* hiddenStateRuleAt(const Kind& kind, const std::string& pattern) {
    for (const HiddenStateRule& rule : hiddenStateRules()) {
        if (std::string(kind.name) == rule.kind && pattern == std::string("/") + rule.member) {
            return &rule;
        }
    }
    return nullptr;
}

void addHiddenStateFindings(const Kind& kind, const Json::Value& document, KeptFindings& kept) {
    forEachRecord(
        kind, document, [&kept](const Kind& record, const Json::Value& node, const JsonPath& path) {
            if (!node.isObject()) {
                return;
            }
            for (const HiddenStateRule& rule : hiddenStateRules()) {
                const Json::Value* text = node.find(
                    rule.member, rule.member + std::char_traits<char>::length(rule.member));
                Json::Value held;
                if (std::string(record.name) != rule.kind || text == nullptr ||
                    !rule.hides(*text, held)) {
                    continue;
                }
                if (kept.room() == 0) {
                    ++kept.omitted;
                    continue;
                }
                JsonPath where = path;
                where.push_back(PathStep::member(rule.member));
                kept.findings.push_back(
                    {Finding::Type::HiddenState, std::move(where), *text, held});
            }
        });
}

}  // namespace zelct
