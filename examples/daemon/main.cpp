// A daemon's start-up with the check library: it checks its channel tables before it loads
// them, logs every finding as an editor's warning line, refuses the file when a finding's kind
// says so and otherwise goes on with what the library understood.
//
//   zel-daemon-example [--ignore KIND]... [--refuse KIND]... FILE
//
// Exit 0 when the tables are loaded, 1 when a finding refuses them, 2 when the file cannot be
// used or the arguments are wrong.
#include <cstdio>
#include <cstring>
#include <map>
#include <string>

#include "ChannelTables.h"
#include "DocumentCheck.h"
#include "Logger.h"

namespace {

enum class Policy { Ignore, Warn, Refuse };

// What a finding of each kind does; a kind not named here is a warning. A member given twice
// holds two intents and the device takes the last one silently: refused unless told otherwise.
std::map<std::string, Policy> defaultPolicies() {
    return {{"duplicate-member", Policy::Refuse}};
}

// Logs the findings by their policy; false when one of them refuses the file.
bool acceptFindings(const DocumentCheck::Report& report,
                    const std::map<std::string, Policy>& policies) {
    bool accepted = true;
    for (const DocumentCheck::Finding& finding : report.findings) {
        const auto policy = policies.find(finding.kind);
        const Policy what = policy == policies.end() ? Policy::Warn : policy->second;
        if (what == Policy::Ignore) {
            continue;
        }
        Logger::log(Logger::logWarning, "%s:%d:%d: %s: %s", report.name.c_str(), finding.line,
                    finding.column, finding.pointer.c_str(), finding.message.c_str());
        if (what == Policy::Refuse) {
            Logger::log(Logger::logError, "ERR::%s refused: a finding of kind %s at %s",
                        report.name.c_str(), finding.kind.c_str(), finding.pointer.c_str());
            accepted = false;
        }
    }
    return accepted;
}

}  // namespace

int main(int argc, char** argv) {
    std::map<std::string, Policy> policies = defaultPolicies();
    std::string path;
    for (int i = 1; i < argc; ++i) {
        const bool ignore = std::strcmp(argv[i], "--ignore") == 0;
        const bool refuse = std::strcmp(argv[i], "--refuse") == 0;
        if ((ignore || refuse) && i + 1 < argc) {
            policies[argv[++i]] = ignore ? Policy::Ignore : Policy::Refuse;
        } else if (path.empty() && argv[i][0] != '-') {
            path = argv[i];
        } else {
            std::fprintf(stderr, "usage: %s [--ignore KIND]... [--refuse KIND]... FILE\n", argv[0]);
            return 2;
        }
    }
    if (path.empty()) {
        std::fprintf(stderr, "usage: %s [--ignore KIND]... [--refuse KIND]... FILE\n", argv[0]);
        return 2;
    }

    DocumentCheck::Report report = DocumentCheck::checkFile("channel-tables", path);
    if (report.status == DocumentCheck::Unusable) {
        Logger::log(Logger::logError, "ERR::%s:%d:%d: %s", path.c_str(), report.problemLine,
                    report.problemColumn, report.problem.c_str());
        return 2;
    }
    if (!acceptFindings(report, policies)) {
        return 1;
    }

    // What the device runs on: what the library understood, which reads back as it was read.
    ChannelTables tables;
    tables.Deserialize(report.understood);
    size_t channels = 0;
    for (const ChannelTable& table : tables.tables) {
        channels += table.entries.size();
    }
    Logger::log(Logger::logInfo, "INF::%s: %zu channel tables, %zu channels", path.c_str(),
                tables.tables.size(), channels);
    return 0;
}
