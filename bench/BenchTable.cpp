// Turns the JSON report of zelct-bench into the tables scripts/bench.sh prints: per document
// kind and size the file round trip of the floor (jsoncpp alone) and of the library with their
// ratio, the in-memory work (parse + write against Deserialize + Serialize) with its ratio, and
// the time per element of the scaling series. Takes the medians when the run was repeated.
//
//   zelct-bench-table report.json

#include <json/json.h>

#include <cstdio>
#include <fstream>
#include <map>
#include <string>
#include <vector>

namespace {

constexpr double kFileTarget = 1.4;  // library file round trip / floor file round trip
constexpr double kJsonTarget = 0.5;  // (Deserialize + Serialize) / (parse + write)

struct Measure {
    double floor = 0, library = 0, ratio = 0;
    double parse = 0, write = 0, deserialize = 0, serialize = 0;
    std::string error;
};

struct Row {
    std::string kind, size;
    int elements = 0, scale = 0;
    bool large = false;
    Measure json, file;
    bool hasJson = false, hasFile = false;
    // The least any record code adds to the floor's file round trip, measured in the same
    // iterations as a floor and a library round trip of its own; 0 where not measured.
    double least = 0, leastRatio = 0;
    Measure beside;
};

std::vector<std::string> split(const std::string& name) {
    std::vector<std::string> parts;
    std::string::size_type from = 0;
    for (;;) {
        const std::string::size_type slash = name.find('/', from);
        parts.push_back(name.substr(from, slash - from));
        if (slash == std::string::npos) {
            return parts;
        }
        from = slash + 1;
    }
}

// "12.3 us", "4.56 ms": three significant digits in the unit that fits.
std::string duration(double seconds) {
    char text[32];
    if (seconds <= 0) {
        return "-";
    }
    if (seconds < 1e-6) {
        std::snprintf(text, sizeof text, "%.1f ns", seconds * 1e9);
    } else if (seconds < 1e-3) {
        std::snprintf(text, sizeof text, seconds < 1e-5 ? "%.2f us" : "%.1f us", seconds * 1e6);
    } else if (seconds < 1) {
        std::snprintf(text, sizeof text, seconds < 1e-2 ? "%.2f ms" : "%.1f ms", seconds * 1e3);
    } else {
        std::snprintf(text, sizeof text, "%.2f s", seconds);
    }
    return text;
}

std::string number(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.2f", value);
    return text;
}

bool isMedianOrSingle(const Json::Value& run, bool repeated) {
    if (!repeated) {
        return run.get("run_type", "iteration").asString() == "iteration";
    }
    return run.get("aggregate_name", "").asString() == "median";
}

std::vector<Row> readRows(const Json::Value& report) {
    const Json::Value& runs = report["benchmarks"];
    bool repeated = false;
    for (const Json::Value& run : runs) {
        repeated = repeated || run.get("run_type", "").asString() == "aggregate";
    }
    std::vector<Row> rows;
    std::map<std::string, size_t> index;
    for (const Json::Value& run : runs) {
        if (!isMedianOrSingle(run, repeated)) {
            continue;
        }
        const std::vector<std::string> parts =
            split(run.get("run_name", run.get("name", "")).asString());
        if (parts.size() < 3) {
            continue;
        }
        const std::string key = parts[0] + "/" + parts[1];
        if (index.count(key) == 0) {
            index[key] = rows.size();
            Row row;
            row.kind = parts[0];
            row.size = parts[1];
            rows.push_back(row);
        }
        Row& row = rows[index[key]];
        row.elements = run.get("elements", row.elements).asInt();
        row.scale = run.get("scale", row.scale).asInt();
        row.large = run.get("large", row.large ? 1 : 0).asInt() != 0;
        if (parts[2] == "least") {
            row.least = run.get("least", 0).asDouble();
            row.leastRatio = run.get("least_ratio", 0).asDouble();
            row.beside.floor = run.get("floor", 0).asDouble();
            row.beside.library = run.get("library", 0).asDouble();
            row.beside.ratio = run.get("ratio", 0).asDouble();
            continue;
        }
        const bool isJson = parts[2] == "json";
        Measure& m = isJson ? row.json : row.file;
        (isJson ? row.hasJson : row.hasFile) = true;
        if (run.get("error_occurred", false).asBool()) {
            m.error = run.get("error_message", "failed").asString();
            continue;
        }
        m.floor = run.get("floor", 0).asDouble();
        m.library = run.get("library", 0).asDouble();
        m.ratio = run.get("ratio", 0).asDouble();
        m.parse = run.get("parse", 0).asDouble();
        m.write = run.get("write", 0).asDouble();
        m.deserialize = run.get("deserialize", 0).asDouble();
        m.serialize = run.get("serialize", 0).asDouble();
    }
    return rows;
}

void printMachine(const Json::Value& report) {
    const Json::Value& context = report["context"];
    std::printf("host %s, %d CPUs at %d MHz, jsoncpp %s, load average at start %s\n",
                context.get("host_name", "?").asString().c_str(),
                context.get("num_cpus", 0).asInt(), context.get("mhz_per_cpu", 0).asInt(),
                JSONCPP_VERSION_STRING,
                context["load_avg"].isArray() && context["load_avg"].size() > 0
                    ? number(context["load_avg"][0].asDouble()).c_str()
                    : "?");
    std::printf("files in %s\n", context.get("scratch_folder", "?").asString().c_str());
}

void printRoundTrips(const std::vector<Row>& rows) {
    std::printf("\n%-18s %-7s | %-34s | %-34s | %s\n", "", "", "file round trip", "in memory",
                "library");
    std::printf("%-18s %-7s | %10s %10s %6s %5s | %10s %10s %6s %5s | %s\n", "kind", "size",
                "floor", "library", "ratio", "", "floor", "library", "ratio", "", "per element");
    for (const Row& row : rows) {
        std::printf("%-18s %-7s |", row.kind.c_str(), row.size.c_str());
        const Measure* both[] = {&row.file, &row.json};
        const double targets[] = {kFileTarget, kJsonTarget};
        for (int i = 0; i < 2; ++i) {
            const Measure& m = *both[i];
            if (!m.error.empty()) {
                std::printf(" %-34s |", ("error: " + m.error).substr(0, 34).c_str());
                continue;
            }
            const char* verdict = !row.large ? "" : m.ratio <= targets[i] ? "ok" : "OVER";
            std::printf(" %10s %10s %6s %5s |", duration(m.floor).c_str(),
                        duration(m.library).c_str(), number(m.ratio).c_str(), verdict);
        }
        std::printf(" %s\n",
                    row.elements > 0 ? duration(row.file.library / row.elements).c_str() : "-");
    }
    std::printf(
        "\nratio: library / floor. Targets at the large sizes: file round trip <= %.1f, "
        "in memory <= %.1f (ok / OVER).\n",
        kFileTarget, kJsonTarget);
    std::printf(
        "in memory: floor = parse + write (toStyledString), library = Deserialize + "
        "Serialize.\n");
}

// Printed only where the report holds a "least" benchmark.
void printLeast(const std::vector<Row>& rows) {
    bool header = false;
    for (const Row& row : rows) {
        if (row.least <= 0) {
            continue;
        }
        if (!header) {
            std::printf(
                "\nleast: the floor's file round trip plus building the written document and "
                "nothing else,\nbeside a floor and a library round trip in the same iterations\n");
            std::printf("%-18s %-7s | %10s | %10s %6s | %10s %6s\n", "kind", "size", "floor",
                        "least", "ratio", "library", "ratio");
            header = true;
        }
        std::printf("%-18s %-7s | %10s | %10s %6s | %10s %6s\n", row.kind.c_str(), row.size.c_str(),
                    duration(row.beside.floor).c_str(), duration(row.least).c_str(),
                    number(row.leastRatio).c_str(), duration(row.beside.library).c_str(),
                    number(row.beside.ratio).c_str());
    }
}

void printSteps(const std::vector<Row>& rows) {
    std::printf("\n%-18s %-7s | %10s %10s | %11s %10s\n", "kind", "size", "parse", "write",
                "deserialize", "serialize");
    for (const Row& row : rows) {
        const Measure& m = row.json;
        if (!row.hasJson || !m.error.empty()) {
            continue;
        }
        std::printf("%-18s %-7s | %10s %10s | %11s %10s\n", row.kind.c_str(), row.size.c_str(),
                    duration(m.parse).c_str(), duration(m.write).c_str(),
                    duration(m.deserialize).c_str(), duration(m.serialize).c_str());
    }
}

// Time per element across 1x, 4x and 16x. The in-memory work is what must stay flat; the file
// round trip carries a fixed cost per file (open, close) that small documents share among
// few elements. Larger documents also outgrow the processor's caches, which slows jsoncpp's
// own work per element as much: "floor vs 1x" shows that share, "library / floor" whether the
// library keeps its proportion.
void printScaling(const std::vector<Row>& rows) {
    std::printf("\nscaling: time per element, in memory (file round trip at the right)\n");
    std::printf("%-18s %5s %-7s %8s | %10s %7s | %10s %7s | %7s | %10s %10s\n", "kind", "scale",
                "size", "elements", "floor", "vs 1x", "library", "vs 1x", "lib/flr", "file floor",
                "library");
    std::map<std::string, std::pair<double, double>> base;
    for (const Row& row : rows) {
        if (row.scale <= 0 || row.elements <= 0 || !row.file.error.empty() ||
            !row.json.error.empty()) {
            continue;
        }
        const double floor = row.json.floor / row.elements;
        const double library = row.json.library / row.elements;
        if (row.scale == 1) {
            base[row.kind] = {floor, library};
        }
        const auto known = base.find(row.kind);
        const bool hasBase = known != base.end() && known->second.first > 0;
        std::printf(
            "%-18s %4dx %-7s %8d | %10s %7s | %10s %7s | %7s | %10s %10s\n", row.kind.c_str(),
            row.scale, row.size.c_str(), row.elements, duration(floor).c_str(),
            hasBase ? number(floor / known->second.first).c_str() : "-", duration(library).c_str(),
            hasBase ? number(library / known->second.second).c_str() : "-",
            number(row.json.ratio).c_str(), duration(row.file.floor / row.elements).c_str(),
            duration(row.file.library / row.elements).c_str());
    }
    std::printf(
        "vs 1x: time per element against the 1x size (flat: near 1.00); lib/flr: the "
        "library's time against jsoncpp's at that size.\n");
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s report.json\n", argv[0]);
        return 2;
    }
    std::ifstream in(argv[1]);
    Json::Value report;
    Json::CharReaderBuilder builder;
    // The coefficient of variation of a counter that never varies is written as NaN.
    builder["allowSpecialFloats"] = true;
    std::string errors;
    if (!in || !Json::parseFromStream(builder, in, &report, &errors)) {
        std::fprintf(stderr, "%s: cannot read the report: %s\n", argv[1], errors.c_str());
        return 1;
    }
    const std::vector<Row> rows = readRows(report);
    if (rows.empty()) {
        std::fprintf(stderr, "%s: no document benchmarks in the report\n", argv[1]);
        return 1;
    }
    printMachine(report);
    printRoundTrips(rows);
    printLeast(rows);
    printSteps(rows);
    printScaling(rows);
    return 0;
}
