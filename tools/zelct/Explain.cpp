// Where each value the device holds comes from: what the class writes, walked beside the file's
// document, with what the check found about the members it does not hold.
#include "Explain.h"

#include <algorithm>
#include <utility>

#include "Understood.h"

namespace zelct {

namespace {

bool isLeaf(const Json::Value& value) {
    return !(value.isObject() || value.isArray()) || value.empty();
}

bool sameShape(const Json::Value& a, const Json::Value& b) {
    return (a.isObject() && b.isObject()) || (a.isArray() && b.isArray());
}

// What the walk knows of the file above the node it is at.
struct Context {
    Position around;                        // the file's object or array that holds the node
    const Json::Value* replaced = nullptr;  // a value of the file read as a whole other value
    Position replacedAt;
};

class MemberWalk {
public:
    MemberWalk(const SourceText* source, std::vector<ExplainedMember>& members)
        : source_(source), members_(members) {}

    void walk(const Json::Value& held, const Json::Value* given, JsonPath& path,
              const Context& context) {
        if (isLeaf(held)) {
            leaf(held, given, path, context);
            return;
        }
        Context inner = context;
        if (given != nullptr && sameShape(held, *given)) {
            inner.around = placeOf(source_, *given, isMember(path));
        } else if (given != nullptr) {
            inner.replaced = given;
            inner.replacedAt = placeOf(source_, *given, isMember(path));
        }
        const Json::Value* shaped = given != nullptr && sameShape(held, *given) ? given : nullptr;
        if (held.isObject()) {
            members(held, shaped, path, inner);
        } else {
            elements(held, shaped, path, inner);
        }
    }

private:
    static bool isMember(const JsonPath& path) { return !path.empty() && !path.back().isIndex; }

    void members(const Json::Value& held, const Json::Value* given, JsonPath& path,
                 const Context& context) {
        for (auto it = held.begin(); it != held.end(); ++it) {
            const std::string name = it.name();
            const Json::Value* member =
                given != nullptr ? given->find(name.data(), name.data() + name.size()) : nullptr;
            path.push_back(PathStep::member(name));
            walk(*it, member, path, context);
            path.pop_back();
        }
    }

    void elements(const Json::Value& held, const Json::Value* given, JsonPath& path,
                  const Context& context) {
        const std::vector<const Json::Value*> sources =
            given != nullptr ? elementSources(*given, held)
                             : std::vector<const Json::Value*>(held.size(), nullptr);
        for (Json::ArrayIndex i = 0; i < held.size(); ++i) {
            path.push_back(PathStep::element(i));
            walk(held[i], sources[i], path, context);
            path.pop_back();
        }
    }

    void leaf(const Json::Value& held, const Json::Value* given, const JsonPath& path,
              const Context& context) {
        ExplainedMember member;
        member.path = path;
        member.value = held;
        Position place = context.around;
        if (given == nullptr && context.replaced != nullptr) {
            member.origin = Origin::Changed;
            member.from = *context.replaced;
            place = context.replacedAt;
        } else if (given == nullptr) {
            member.origin = Origin::Default;
        } else {
            place = placeOf(source_, *given, isMember(path));
            const bool same = sameValue(held, *given) || (held.empty() && sameShape(held, *given));
            member.origin = same ? Origin::File : Origin::Changed;
            if (!same) {
                member.from = *given;
            }
        }
        member.line = place.line;
        member.column = place.column;
        members_.push_back(std::move(member));
    }

    const SourceText* source_;
    std::vector<ExplainedMember>& members_;
};

// The finding's sentence without the pointer it starts with.
std::string sentenceOf(const Finding& finding) {
    std::string text = findingText(finding);
    const std::string prefix = pointerText(finding.path) + ": ";
    if (!finding.path.empty() && text.compare(0, prefix.size(), prefix) == 0) {
        text.erase(0, prefix.size());
    }
    return text;
}

bool isMemberNote(Finding::Type type) {
    switch (type) {
        case Finding::Type::DuplicateMember:
        case Finding::Type::NotUtf8:
        case Finding::Type::ControlInString:
        case Finding::Type::NumberText:
        case Finding::Type::NulInString:
            return true;
        default:
            return false;
    }
}

ExplainedMember notHeld(const Finding& finding) {
    ExplainedMember member;
    member.path = finding.path;
    member.origin =
        finding.type == Finding::Type::Dropped ? Origin::Dropped : Origin::NotWrittenBack;
    member.from = finding.original;
    member.line = finding.line;
    member.column = finding.column;
    return member;
}

bool startsWith(const JsonPath& path, const JsonPath& prefix) {
    return path.size() >= prefix.size() &&
           std::equal(prefix.begin(), prefix.end(), path.begin(),
                      [](const PathStep& a, const PathStep& b) {
                          return a.isIndex == b.isIndex && a.key == b.key && a.index == b.index;
                      });
}

// The first member at the path or after it, in the order the device writes them, which the
// members are in.
std::vector<ExplainedMember>::iterator firstUnder(std::vector<ExplainedMember>& members,
                                                  const JsonPath& path) {
    return std::lower_bound(members.begin(), members.end(), path,
                            [](const ExplainedMember& member, const JsonPath& p) {
                                return writtenBefore(member.path, p);
                            });
}

// The member a finding of the text is about: the first at its path or under it.
ExplainedMember* memberUnder(std::vector<ExplainedMember>& members, const JsonPath& path) {
    const auto first = firstUnder(members, path);
    return first != members.end() && startsWith(first->path, path) ? &*first : nullptr;
}

// A member of the file that the class never reads leaves what the device holds there to the
// class: the values held at or under it are its defaults, whatever the file says. False when
// the device holds nothing there.
bool heldAsDefaults(std::vector<ExplainedMember>& members, const Finding& dropped) {
    bool held = false;
    for (auto it = firstUnder(members, dropped.path);
         it != members.end() && startsWith(it->path, dropped.path); ++it) {
        held = true;
        if (it->origin != Origin::File && it->origin != Origin::Changed) {
            continue;
        }
        it->from = it->origin == Origin::File ? it->value : it->from;
        it->origin = Origin::Default;
        it->unread = true;
    }
    return held;
}

void addFindings(std::vector<ExplainedMember>& members, const std::vector<Finding>& findings) {
    std::vector<ExplainedMember> notHeldMembers;
    for (const Finding& finding : findings) {
        if (finding.type == Finding::Type::NotWrittenBack ||
            (finding.type == Finding::Type::Dropped && !heldAsDefaults(members, finding))) {
            notHeldMembers.push_back(notHeld(finding));
        }
    }
    members.insert(members.end(), notHeldMembers.begin(), notHeldMembers.end());
    std::stable_sort(members.begin(), members.end(),
                     [](const ExplainedMember& a, const ExplainedMember& b) {
                         return writtenBefore(a.path, b.path);
                     });
    for (const Finding& finding : findings) {
        ExplainedMember* member = memberUnder(members, finding.path);
        if (member == nullptr || finding.path.empty()) {
            continue;  // a comment, a trailing comma: nothing any member holds
        }
        if (finding.type == Finding::Type::HiddenState &&
            member->path.size() == finding.path.size()) {
            member->origin = Origin::HiddenState;
            member->kept = finding.understood;
            member->hidden = sentenceOf(finding);
        } else if (isMemberNote(finding.type)) {
            member->notes.push_back(
                {finding.type, sentenceOf(finding), finding.line, finding.column});
        }
    }
}

}  // namespace

const char* originName(Origin origin) {
    switch (origin) {
        case Origin::File:
            return "file";
        case Origin::Default:
            return "default";
        case Origin::Changed:
            return "changed";
        case Origin::HiddenState:
            return "hidden-state";
        case Origin::Dropped:
            return "dropped";
        case Origin::NotWrittenBack:
            return "not-written-back";
    }
    return "";
}

std::vector<ExplainedMember> explainMembers(const Kind& kind, const Json::Value& document,
                                            const SourceText* source, const Outcome& outcome) {
    std::vector<ExplainedMember> members;
    const Json::Value held = heldDocument(kind, outcome);
    JsonPath path;
    Context context;
    context.around = placeOf(source, document, false);
    MemberWalk(source, members).walk(held, &document, path, context);
    addFindings(members, outcome.findings);
    return members;
}

bool differsFromFile(const ExplainedMember& member) {
    return member.origin != Origin::File || !member.notes.empty();
}

}  // namespace zelct
