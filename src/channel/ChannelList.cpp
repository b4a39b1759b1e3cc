#include "ChannelList.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "../common/JsonMember.h"
#include "Logger.h"

namespace {

// Id of an entry that only keeps a position occupied.
constexpr int kDummyId = -1;

// Position read when the document gives none.
constexpr unsigned char kNoPosition = 255;

// "CH[3] POS [2] Type [madi]"
std::string describe(const ChannelId& channel) {
    return "CH[" + std::to_string(channel.getId()) + "] POS [" +
           std::to_string(channel.getPosition()) + "] Type [" + channel.getType().getName() + "]";
}

bool sameKind(const ChannelId& a, const ChannelId& b) {
    return a.getType().getValue() == b.getType().getValue();
}

}  // namespace

int ChannelList::addChannel(const ChannelId& channel) {
    entries.push_back(channel);
    return 0;
}

int ChannelList::removeChannel(ChannelId& channel) {
    auto found = std::find_if(entries.begin(), entries.end(), [&](const ChannelId& entry) {
        return entry.getId() == channel.getId() && entry.getPosition() == channel.getPosition() &&
               sameKind(entry, channel);
    });
    if (found == entries.end()) {
        return 0;
    }
    entries.erase(found);
    return 1;
}

int ChannelList::removeLocalChannel(ChannelId& channel) {
    auto found = std::find_if(entries.begin(), entries.end(), [&](const ChannelId& entry) {
        return entry.getId() == channel.getId() && sameKind(entry, channel);
    });
    if (found == entries.end()) {
        Logger::log(Logger::logDebug,
                    "DBG::ChannelList::removeLocalChannel - did not find channel '%s' in list",
                    describe(channel).c_str());
        return 0;
    }
    const unsigned char position = found->getPosition();
    Logger::log(Logger::logDebug, "DBG::ChannelList::removeLocalChannel - removing channel '%s'",
                describe(*found).c_str());
    entries.erase(found);

    auto sharing = std::find_if(entries.begin(), entries.end(), [&](const ChannelId& entry) {
        return entry.getPosition() == position;
    });
    if (sharing != entries.end()) {
        Logger::log(Logger::logDebug,
                    "DBG::ChannelList::removeLocalChannel - found another channel entry using "
                    "position '%d' ('%s')",
                    position, describe(*sharing).c_str());
        return 1;
    }
    Logger::log(Logger::logDebug,
                "DBG::ChannelList::removeLocalChannel - did not find another channel entry using "
                "position '%d' - creating dummy entry",
                position);
    addChannel(ChannelId(kDummyId, channel.getType(), position));
    return 1;
}

bool ChannelList::isEmpty() const {
    return std::all_of(entries.begin(), entries.end(),
                       [](const ChannelId& entry) { return entry.getId() == kDummyId; });
}

void ChannelList::clearChannelList() {
    entries.clear();
}

int ChannelList::numChannelEntries() const {
    return static_cast<int>(entries.size());
}

int ChannelList::getStreamSideChannelCount() const {
    std::vector<unsigned char> positions;
    positions.reserve(entries.size());
    for (const ChannelId& entry : entries) {
        positions.push_back(entry.getPosition());
    }
    std::sort(positions.begin(), positions.end());
    return static_cast<int>(std::unique(positions.begin(), positions.end()) - positions.begin());
}

void ChannelList::dump(std::string label) {
    Logger::log(Logger::logVerbose, "VBS::Channel list at '%s'", label.c_str());
    for (const ChannelId& entry : entries) {
        Logger::log(Logger::logVerbose, "VBS::Channel: type '%s' ID '%d' position '%d'",
                    entry.getType().getName().c_str(), entry.getId(), entry.getPosition());
    }
}

void ChannelList::Serialize(Json::Value& root) const {
    zelcommon::writeElements(entries, root);
}

void ChannelList::Deserialize(Json::Value& root) {
    zelcommon::readEach(root, ChannelId(0), [this](ChannelId&& channel) {
        if (channel.getPosition() == kNoPosition) {
            channel.setPosition(static_cast<unsigned char>(entries.size()));
        }
        entries.push_back(std::move(channel));
    });
}
