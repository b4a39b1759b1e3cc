// A channel list as a stream's user holds it: MADI and AES3 channels with their positions.
// 64 entries typical, 4096 as the large case; 64, 256 and 1024 for the scaling check.

#include <string>

#include "ChannelList.h"
#include "DocumentHarness.h"

namespace {

ChannelList buildChannels(const bench::DocumentSize& size) {
    ChannelList list;
    DaifType madi;
    madi.setValueAndName(DaifType::DAIF_MADI);
    DaifType aes3;
    aes3.setValueAndName(DaifType::DAIF_AES3);
    for (int i = 0; i < size.elements; ++i) {
        // Positions stay below 255, which a reader takes as "no position".
        const auto position = static_cast<unsigned char>(i % 64);
        list.addChannel(ChannelId(i, i % 4 == 3 ? aes3 : madi, position));
    }
    return list;
}

// Less than any code can add to the floor's file round trip when it reads a channel list out
// of a Json::Value and writes it back into a fresh one: no reading at all, and a writer that
// gives each element a copy of one three-member object built beforehand and copies the parsed
// element's three values into it in place, in the order jsoncpp keeps them, without a search.
// It is checked to give back the very document. What this adds to the floor, no record code
// on this API avoids.
const Json::Value& channelObject() {
    static const Json::Value object = [] {
        Json::Value o(Json::objectValue);
        o["id"] = Json::Value();
        o["position"] = Json::Value();
        o["type"] = Json::Value();
        return o;
    }();
    return object;
}

[[gnu::noinline]] void leastFileRoundTrip(const std::string& in, const std::string& out) {
    std::string text;
    bench::readWholeFile(in, text);
    Json::Value root;
    bench::parseText(text, root);
    Json::Value written(Json::arrayValue);
    Json::ArrayIndex i = 0;
    for (const Json::Value& channel : root) {
        Json::Value& element = written[i++];
        element = channelObject();
        auto to = element.begin();  // "id", "position", "type", as in the parsed element
        for (auto from = channel.begin(); from != channel.end(); ++from, ++to) {
            *to = *from;
        }
    }
    bench::writeWholeFile(out, written.toStyledString());
}

// The floor, the least and the library in every iteration, each one first in turn.
void leastBenchmark(benchmark::State& state, const bench::DocumentSize& size) {
    bench::silenceLogger();
    const bench::Document<ChannelList> doc(buildChannels(size));
    const std::string base = bench::scratchFolder() + "/ChannelList-least-" + size.label;
    const std::string in = base + ".json";
    const std::string out = base + ".out.json";
    std::string stored;
    if (!bench::writeWholeFile(in, doc.text)) {
        state.SkipWithError("cannot write the document into the scratch folder");
        return;
    }
    leastFileRoundTrip(in, out);
    if (!bench::readWholeFile(out, stored) || stored != doc.text) {
        state.SkipWithError("the least round trip does not reproduce the document");
        return;
    }
    void (*const trips[])(const std::string&, const std::string&) = {
        bench::floorFileRoundTrip, leastFileRoundTrip, bench::libraryFileRoundTrip<ChannelList>};
    double spent[3] = {};
    int first = 0;
    for (auto _ : state) {
        double now[3] = {};
        for (int k = 0; k < 3; ++k) {
            const int trip = (first + k) % 3;
            const bench::Clock::time_point t0 = bench::Clock::now();
            trips[trip](in, out);
            now[trip] = bench::secondsBetween(t0, bench::Clock::now());
            spent[trip] += now[trip];
        }
        first = (first + 1) % 3;
        state.SetIterationTime(now[1]);
    }
    const auto perIteration = benchmark::Counter::kAvgIterations;
    state.counters["least"] = benchmark::Counter(spent[1], perIteration);
    state.counters["least_ratio"] = spent[0] > 0 ? spent[1] / spent[0] : 0.0;
    bench::setCommonCounters(state, size, spent[0], spent[2]);
}

const bool registered = [] {
    bench::registerKind<ChannelList>("ChannelList",
                                     {
                                         {"64", 64, 1, false},
                                         {"256", 256, 4, false},
                                         {"1024", 1024, 16, false},
                                         {"4096", 4096, 0, true},
                                     },
                                     buildChannels);
    static const bench::DocumentSize large{"4096", 4096, 0, true};
    benchmark::RegisterBenchmark("ChannelList/4096/least",
                                 [](benchmark::State& state) { leastBenchmark(state, large); })
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond);
    return true;
}();

}  // namespace
