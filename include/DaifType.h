#pragma once

#include <json/json.h>

#include <cctype>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <string>
#include <string_view>

#include "IJsonSerializable.h"
#include "zelCommonTypesExport.h"

// The descriptors are header-only, so they read through these few helpers in the same way as
// the record helpers of the library's sources, which no public header can include.
namespace zelcommon {
namespace detail {

inline const Json::Value* find(const Json::Value& root, const char* key) {
    return root.find(key, key + std::strlen(key));
}

inline int integer(const Json::Value& root, const char* key, int fallback) {
    const Json::Value* found = find(root, key);
    return found != nullptr ? found->asInt() : fallback;
}

inline std::string text(const Json::Value& root, const char* key, const char* fallback) {
    const Json::Value* found = find(root, key);
    return found != nullptr ? found->asString() : std::string(fallback);
}

}  // namespace detail
}  // namespace zelcommon

/// Kind of physical audio/video interface: a number and its name, written as
/// {"type": 3, "string": "madi"}.
///
/// Reading never fails on content; an unknown name keeps the previous number. An empty array or
/// object under "string" counts as absent, and "type" is read only when "string" is absent.
/// Members that throw: "string", "type".
class ZELCOMMONTYPES_API DaifType : public IJsonSerializable {
public:
    /// Interface kind numbers; nameOf gives each one's name.
    enum DaifType_en {
        DAIF_TDM = 0,              ///< "tdm" (also read from "i32s")
        DAIF_I2S = 1,              ///< "i2s"
        DAIF_TPI = 2,              ///< "tpi"
        DAIF_MADI = 3,             ///< "madi" (also read from "aes10")
        DAIF_AES3 = 4,             ///< "aes3"
        DAIF_SDI_VIDEO = 5,        ///< "sdi-video"
        DAIF_SDI_AUDIO = 6,        ///< "sdi-audio"
        DAIF_SDI_ANCILLARY = 7,    ///< "sdi-ancillary"
        DAIF_HDMI_VIDEO = 8,       ///< "hdmi-video"
        DAIF_HDMI_AUDIO = 9,       ///< "hdmi-audio"
        DAIF_HDMI_ANCILLARY = 10,  ///< "hdmi-ancillary"
        DAIF_ANALOG_AUDIO = 11,    ///< "analog-audio"
        DAIF_AUTO = 12             ///< "auto", the default
    };

    /// Kind 12 "auto".
    DaifType() : value(DAIF_AUTO), name("auto") {}

    /// The kind number.
    int getValue() const { return value; }
    /// The kind name, as stored.
    const std::string& getName() const { return name; }
    /// Replaces the number alone; the name stays.
    void setValue(int v) { value = v; }
    /// Replaces the name alone; the number stays.
    void setName(const std::string& n) { name = n; }

    /// Name written for a kind number; "" for a number outside 0..12.
    static const char* nameOf(int kind) {
        static const char* const names[] = {"tdm",
                                            "i2s",
                                            "tpi",
                                            "madi",
                                            "aes3",
                                            "sdi-video",
                                            "sdi-audio",
                                            "sdi-ancillary",
                                            "hdmi-video",
                                            "hdmi-audio",
                                            "hdmi-ancillary",
                                            "analog-audio",
                                            "auto"};
        return (kind >= DAIF_TDM && kind <= DAIF_AUTO) ? names[kind] : "";
    }

    /// Sets the number and rebuilds the name from it; outside 0..12 the name is empty.
    void setValueAndName(int kind) {
        value = kind;
        name = nameOf(kind);
    }

    /// Stores the name as it came and derives the number from it, compared lower-cased.
    /// "i32s"/"tdm" and "madi"/"aes10" also replace the name by the canonical one; other
    /// known names keep the case they arrived in; an unknown name keeps the number.
    void setNameAndResolve(const std::string& given) {
        name = given;
        std::string lower(given);
        for (char& c : lower) {
            c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        }
        for (const Accepted& a : kAccepted) {
            if (std::string_view(lower) == a.text) {
                value = a.kind;
                if (a.canonical) {
                    name = nameOf(a.kind);
                }
                return;
            }
        }
    }

    /// The i-th spelling setNameAndResolve knows, lower-case, in the order it tries them;
    /// null past the last. Tools that describe documents list the accepted names from here.
    static const char* acceptedName(std::size_t i) {
        return i < std::size(kAccepted) ? kAccepted[i].text.data() : nullptr;
    }

    void Serialize(Json::Value& root) const override {
        root[kNumberKey] = Json::Value(value);
        root[kNameKey] = Json::Value(name);
    }

    /// A present "string" decides by its text and "type" is not read; an absent, null or empty
    /// "string" (the access adds a null one) lets "type" decide, default 12.
    void Deserialize(Json::Value& root) override {
        const Json::Value& given = root[kNameKey];
        if (given.empty()) {
            setValueAndName(zelcommon::detail::integer(root, kNumberKey, DAIF_AUTO));
        } else {
            name = given.asString();
        }
        setNameAndResolve(name);
    }

private:
    struct Accepted {
        std::string_view text;  // compared by length first
        DaifType_en kind;
        bool canonical;  // the stored name becomes the kind's own name
    };

    // Tried in this order, first match wins.
    static constexpr Accepted kAccepted[] = {
        {"i32s", DAIF_TDM, true},
        {"tdm", DAIF_TDM, true},
        {"i2s", DAIF_I2S, false},
        {"tpi", DAIF_TPI, false},
        {"madi", DAIF_MADI, true},
        {"aes10", DAIF_MADI, true},
        {"aes3", DAIF_AES3, false},
        {"sdi-audio", DAIF_SDI_AUDIO, false},
        {"sdi-video", DAIF_SDI_VIDEO, false},
        {"sdi-ancillary", DAIF_SDI_ANCILLARY, false},
        {"hdmi-audio", DAIF_HDMI_AUDIO, false},
        {"hdmi-video", DAIF_HDMI_VIDEO, false},
        {"hdmi-ancillary", DAIF_HDMI_ANCILLARY, false},
        {"analog-audio", DAIF_ANALOG_AUDIO, false},
        {"auto", DAIF_AUTO, false},
    };

    static constexpr const char* kNumberKey = "type";
    static constexpr const char* kNameKey = "string";

    int value;
    std::string name;
};

/// Media carried by a channel, written as {"media-type": 0, "string": "audio"}.
/// The number and the name are kept side by side; neither is derived from the other.
/// Members that throw: "media-type", "string".
class ZELCOMMONTYPES_API DaifMediaType : public IJsonSerializable {
public:
    /// Media type 0 "audio".
    DaifMediaType() : value(0), name("audio") {}

    /// The media type number.
    int getValue() const { return value; }
    /// The media type name, as stored.
    const std::string& getName() const { return name; }
    /// Replaces the number alone; the name stays.
    void setValue(int v) { value = v; }
    /// Replaces the name alone; the number stays.
    void setName(const std::string& n) { name = n; }

    void Serialize(Json::Value& root) const override {
        root[kNumberKey] = Json::Value(value);
        root[kNameKey] = Json::Value(name);
    }

    /// A document without "media-type" reads as 3 with an empty name, not as the
    /// constructor's 0 "audio".
    void Deserialize(Json::Value& root) override {
        value = zelcommon::detail::integer(root, kNumberKey, 3);
        name = zelcommon::detail::text(root, kNameKey, "");
    }

private:
    static constexpr const char* kNumberKey = "media-type";
    static constexpr const char* kNameKey = "string";

    int value;
    std::string name;
};

/// Direction an interface supports, written as {"capability": 0, "string": "inout"}.
/// Members that throw: "capability", "string".
class ZELCOMMONTYPES_API DaifCapabilities : public IJsonSerializable {
public:
    /// Capability 0 "inout".
    DaifCapabilities() : value(0), name("inout") {}

    /// The capability number.
    int getValue() const { return value; }
    /// The capability name, as stored.
    const std::string& getName() const { return name; }
    /// Replaces the number alone; the name stays.
    void setValue(int v) { value = v; }
    /// Replaces the name alone; the number stays.
    void setName(const std::string& n) { name = n; }

    void Serialize(Json::Value& root) const override {
        root[kNumberKey] = Json::Value(value);
        root[kNameKey] = Json::Value(name);
    }

    void Deserialize(Json::Value& root) override {
        value = zelcommon::detail::integer(root, kNumberKey, 0);
        name = zelcommon::detail::text(root, kNameKey, "inout");
    }

private:
    static constexpr const char* kNumberKey = "capability";
    static constexpr const char* kNameKey = "string";

    int value;
    std::string name;
};

/// Kind of a network stream, written as its name alone: {"type": "audio"}.
/// The writer knows "test" but the reader does not: reading "test" keeps the kind.
/// Members that throw: "type".
class ZELCOMMONTYPES_API StreamType : public IJsonSerializable {
public:
    /// Stream kind numbers; nameOf gives each one's name.
    enum StreamType_en {
        STREAM_AUDIO = 1,      ///< "audio"
        STREAM_VIDEO = 2,      ///< "video"
        STREAM_ANCILLARY = 3,  ///< "ancillary"
        STREAM_TEST = 4        ///< "test": written, never read
    };

    /// Kind 0, which has no name and writes as "undefined".
    StreamType() : value(0) {}

    /// The kind number.
    int getValue() const { return value; }
    /// Replaces the kind number, stored as given.
    void setValue(int v) { value = v; }
    /// Name of the stored kind, as nameOf gives it.
    std::string getName() const { return nameOf(value); }
    /// Applies the reading rule: "audio", "video", "ancillary" set the kind, any other text
    /// keeps it.
    void setName(const std::string& text) {
        if (text == "audio") {
            value = STREAM_AUDIO;
        } else if (text == "video") {
            value = STREAM_VIDEO;
        } else if (text == "ancillary") {
            value = STREAM_ANCILLARY;
        }
    }

    /// Name written for a kind number; "undefined" for a number outside 1..4.
    static const char* nameOf(int kind) {
        static const char* const names[] = {"audio", "video", "ancillary", "test"};
        return (kind >= STREAM_AUDIO && kind <= STREAM_TEST) ? names[kind - 1] : "undefined";
    }

    void Serialize(Json::Value& root) const override {
        root[kNameKey] = Json::Value(nameOf(value));
    }
    void Deserialize(Json::Value& root) override {
        setName(zelcommon::detail::text(root, kNameKey, ""));
    }

private:
    static constexpr const char* kNameKey = "type";

    int value;
};

/// Whether something is enabled, written as its name alone: {"state": "Enabled"}.
/// Names are compared exactly: "enabled" is not a state name and reads as Disabled.
/// Members that throw: "state".
class ZELCOMMONTYPES_API State : public IJsonSerializable {
public:
    /// State numbers; nameOf gives each one's name.
    enum State_en { STATE_DISABLED = 0, STATE_ENABLED = 1, STATE_PAUSED = 2 };

    /// Disabled.
    State() : value(STATE_DISABLED) {}

    /// The state number.
    int getValue() const { return value; }
    /// Replaces the state number, stored as given.
    void setValue(int v) { value = v; }
    /// Name of the stored state, as nameOf gives it.
    std::string getName() const { return nameOf(value); }
    /// Applies the reading rule: "Enabled" gives 1, "Paused" 2, any other text 0.
    void setName(const std::string& text) {
        if (text == "Enabled") {
            value = STATE_ENABLED;
        } else if (text == "Paused") {
            value = STATE_PAUSED;
        } else {
            value = STATE_DISABLED;
        }
    }

    /// Name written for a state number; "Undefined" for a number outside 0..2.
    static const char* nameOf(int state) {
        static const char* const names[] = {"Disabled", "Enabled", "Paused"};
        return (state >= STATE_DISABLED && state <= STATE_PAUSED) ? names[state] : "Undefined";
    }

    void Serialize(Json::Value& root) const override {
        root[kNameKey] = Json::Value(nameOf(value));
    }
    void Deserialize(Json::Value& root) override {
        setName(zelcommon::detail::text(root, kNameKey, ""));
    }

private:
    static constexpr const char* kNameKey = "state";

    int value;
};
