// Where a reading that throws goes wrong: the first node the reading rejects.
#include "Check.h"

#include <string>
#include <vector>

namespace zelct {

namespace {

// The children of a node, for the search of a rejected one. Their addresses stay valid while
// the node gains or loses no child.
struct Children {
    std::vector<Json::Value*> values;
    std::vector<std::string> names;  // for an object
};

Children childrenOf(Json::Value& node) {
    Children children;
    if (node.isObject()) {
        children.names = node.getMemberNames();
        for (const std::string& name : children.names) {
            children.values.push_back(&node[name]);
        }
    } else if (node.isArray()) {
        for (Json::ArrayIndex i = 0; i < node.size(); ++i) {
            children.values.push_back(&node[i]);
        }
    }
    return children;
}

PathStep stepTo(const Children& children, size_t i) {
    return children.names.empty() ? PathStep::element(static_cast<Json::ArrayIndex>(i))
                                  : PathStep::member(children.names[i]);
}

// Whether the reading succeeds with the children from `first` on set to null. They are
// swapped out and back, so the document is never copied for a question but by the reading.
bool readsWithNullsFrom(const Kind& kind, const Json::Value& work, const Children& children,
                        size_t first) {
    std::vector<Json::Value> saved(children.values.size() - first);
    for (size_t i = first; i < children.values.size(); ++i) {
        children.values[i]->swap(saved[i - first]);
    }
    const bool reads = !readAs(kind, work).failed;
    for (size_t i = first; i < children.values.size(); ++i) {
        children.values[i]->swap(saved[i - first]);
    }
    return reads;
}

// Whether the reading succeeds with the list cut to its first `count` elements. The list is
// swapped with the shorter one and back, so only the kept elements are copied.
bool readsWithFirst(const Kind& kind, const Json::Value& work, Json::Value& list, size_t count) {
    Json::Value shorter(Json::arrayValue);
    for (Json::ArrayIndex i = 0; i < count; ++i) {
        shorter.append(list[i]);
    }
    list.swap(shorter);
    const bool reads = !readAs(kind, work).failed;
    list.swap(shorter);
    return reads;
}

// Cuts a list to its first `count` elements; building the shorter list is cheaper than
// erasing the others one by one from jsoncpp's map.
void keepFirst(Json::Value& list, size_t count) {
    Json::Value shorter(Json::arrayValue);
    for (Json::ArrayIndex i = 0; i < count; ++i) {
        shorter.append(Json::Value());
        shorter[i].swap(list[i]);
    }
    shorter.swap(list);
}

// The first element of a list that the reading rejects: the lengths tried grow from the
// front by doubling and are then halved, so a list rejected early costs what its head costs.
bool firstRejectedElement(const Kind& kind, const Json::Value& work, Json::Value& list,
                          size_t& first) {
    if (list.empty() || !readsWithFirst(kind, work, list, 0)) {
        return false;
    }
    size_t reads = 0;            // reading succeeds with the first `reads` elements
    size_t fails = list.size();  // reading fails with the first `fails` elements
    for (size_t count = 1; count < fails; count *= 2) {
        if (!readsWithFirst(kind, work, list, count)) {
            fails = count;
            break;
        }
        reads = count;
    }
    while (fails - reads > 1) {
        const size_t middle = reads + (fails - reads) / 2;
        (readsWithFirst(kind, work, list, middle) ? reads : fails) = middle;
    }
    first = reads;
    return true;
}

bool firstRejectedMember(const Kind& kind, const Json::Value& work, const Children& children,
                         size_t& first) {
    if (children.values.empty() || !readsWithNullsFrom(kind, work, children, 0)) {
        return false;
    }
    size_t reads = 0;                       // reading succeeds with children[reads..] null
    size_t fails = children.values.size();  // reading fails with children[fails..] null
    while (fails - reads > 1) {
        const size_t middle = reads + (fails - reads) / 2;
        (readsWithNullsFrom(kind, work, children, middle) ? reads : fails) = middle;
    }
    first = reads;
    return true;
}

}  // namespace

FailurePlace locateFailure(const Kind& kind, const Json::Value& document) {
    Json::Value work = document;
    return locateFailureInPlace(kind, work);
}

FailurePlace locateFailureInPlace(const Kind& kind, Json::Value& work) {
    // Null reads as the defaults and a shorter list reads as fewer elements, so nulling more
    // members or cutting a list shorter never makes a reading fail. The first child that the
    // reading rejects is the last one that must stay for the reading to fail while every
    // child after it is null or cut off; with those gone, the search goes on inside it.
    FailurePlace place;
    Json::Value* node = &work;
    while (true) {
        size_t first = 0;
        if (node->isArray()) {
            if (!firstRejectedElement(kind, work, *node, first)) {
                break;
            }
            keepFirst(*node, first + 1);
            place.path.push_back(PathStep::element(static_cast<Json::ArrayIndex>(first)));
            node = &(*node)[static_cast<Json::ArrayIndex>(first)];
        } else {
            const Children children = childrenOf(*node);
            if (!firstRejectedMember(kind, work, children, first)) {
                break;
            }
            for (size_t i = first + 1; i < children.values.size(); ++i) {
                *children.values[i] = Json::Value();
            }
            place.path.push_back(stepTo(children, first));
            node = children.values[first];
        }
        place.found = true;
    }
    if (place.found) {
        place.error = readAs(kind, work).error;
    }
    return place;
}

}  // namespace zelct
