#include "Kinds.h"

#include "zelCommonTypes.h"

namespace zelct {

namespace {

template <class T>
std::unique_ptr<IJsonSerializable> make() {
    return std::make_unique<T>();
}

}  // namespace

const std::vector<Kind>& allKinds() {
    static const std::vector<Kind> kinds = {
        {"alarms", TopLevel::Object, "the set of raised alarms (AlarmManager)",
         &make<AlarmManager>},
        {"alarm", TopLevel::Object, "one alarm: severity, description, type (Alarm)", &make<Alarm>},
        {"sfp", TopLevel::Object, "an SFP module record (SfpInfo)", &make<SfpInfo>},
    };
    return kinds;
}

const Kind* findKind(const std::string& name) {
    for (const Kind& kind : allKinds()) {
        if (name == kind.name) {
            return &kind;
        }
    }
    return nullptr;
}

const char* topLevelText(TopLevel topLevel) {
    return topLevel == TopLevel::Array ? "an array" : "an object";
}

bool hasTopLevel(const Kind& kind, const Json::Value& document) {
    return kind.topLevel == TopLevel::Array ? document.isArray() : document.isObject();
}

}  // namespace zelct
