#pragma once

#include <json/json.h>

#include <cstddef>
#include <string>
#include <vector>

#include "Logger.h"
#include "zelCommonTypesCheckExport.h"

/// Checks a JSON document against what the device's library understands from it, in
/// libzelCommonTypesCheck: every member the library drops, reads as another value or adds, and
/// what the device's parser makes of the text before any class reads it.
///
/// A check reads the document as a kind (a class whose JSON form stands alone as a file, named
/// as kindNames() lists them) and answers with a Report. It never throws: a kind that does not
/// exist, a file that cannot be loaded or a document of the wrong shape is an Unusable report.
/// Any number of threads may check documents at once. The library's log lines of a check are
/// kept in its report and never reach the process's Logger sink, which stays as it was.
class ZELCOMMONTYPESCHECK_API DocumentCheck {
public:
    /// The verdict on a document.
    enum Status_en {
        Exact = 0,     ///< The library understands the document exactly as it is written.
        Findings = 1,  ///< The library understands it otherwise; the findings say where.
        Unusable = 2,  ///< The document cannot be loaded or read as the kind.
    };

    /// One place where the library understands the document otherwise than it is written.
    struct Finding {
        std::string kind;     ///< The finding's kind, as the tool names it: "dropped", "changed"...
        std::string pointer;  ///< JSON pointer of the node; "" for the whole document.
        int line = 0;         ///< 1-based line in the text; 0 when checked from a value.
        int column = 0;       ///< 1-based column in characters; 0 when checked from a value.
        Json::Value original;    ///< The value as written; null when the node was added.
        Json::Value understood;  ///< What the device reads or keeps; null when dropped.
        std::string message;     ///< One line on what happens, without the pointer.
    };

    /// What a check found in one document.
    struct Report {
        Status_en status = Exact;       ///< The verdict.
        std::string name;               ///< The file's path, or the name given with a text.
        std::vector<Finding> findings;  ///< In the order they were found, the first 1000.
        std::size_t omitted = 0;        ///< Findings after those, counted only.
        /// The library's log lines while it loaded and read the document, in order.
        std::vector<Logger::Capture::Line> log;
        /// What the library understood, as the kind writes it; null when Unusable.
        Json::Value understood;
        std::string problem;         ///< Unusable: why, in one line; else "".
        std::string problemPointer;  ///< Unusable: the node refused, when one is; else "".
        int problemLine = 0;         ///< Unusable: 1-based line of the problem, or 0.
        int problemColumn = 0;       ///< Unusable: 1-based column of the problem, or 0.
    };

    /// The names of every document kind, in the order the tool lists them.
    static std::vector<std::string> kindNames();

    /// Whether a kind of that name exists.
    static bool hasKind(const std::string& kind);

    /// Checks a text as the device reads it from a file. `name` is what the report names it by.
    static Report checkText(const std::string& kind, const std::string& text,
                            const std::string& name);

    /// Loads a file as FileMgr::loadLocalCfg loads it and checks it.
    static Report checkFile(const std::string& kind, const std::string& path);

    /// Checks a document that is loaded already; its findings carry no positions.
    static Report checkValue(const std::string& kind, const Json::Value& document);
};
