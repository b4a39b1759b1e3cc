#pragma once

#include <json/json.h>

#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "Check.h"
#include "Kinds.h"
#include "Log.h"

namespace zelct {

// How results are written on standard output. Log lines and problems are text on standard
// error in every format.
enum class Format { Text, Json, Sarif, Github, Junit };

// The names of --format, in the order the help lists them; with `forCheck`, also those only
// check writes (junit: test reports have no place for a catalogue).
std::vector<std::string> formatNames(bool forCheck = false);

// The format of that name; false for an unknown one.
bool formatNamed(const std::string& name, Format& format, bool forCheck = false);

// Something a command cannot do: an argument it cannot use, a file it cannot read or write,
// a value the library refuses. `file` is empty when the problem is not about one file.
struct Problem {
    std::string file;
    int line = 0;  // 1-based place in the file, 0 when unknown
    int column = 0;
    std::string message;
    int exit = 2;
};

// The totals of a check over a repository of documents.
struct CheckSummary {
    size_t files = 0;
    size_t exact = 0;
    size_t findings = 0;
    size_t unusable = 0;
    bool timed = false;  // whether `seconds` is shown; a comparison of runs leaves it out
    double seconds = 0;
};

// "12 files: 9 understood exactly, 2 with findings, 1 unusable; 2.1 s".
std::string summaryText(const CheckSummary& summary);

// {"files", "exact", "findings", "unusable"} and "seconds" when timed.
Json::Value summaryJson(const CheckSummary& summary);

// Everything a command prints goes through one printer, so that each output format is
// written in one place and a new format is one more implementation of this interface.
class Printer {
public:
    Printer(std::ostream& out, std::ostream& err) : out_(out), err_(err) {}
    virtual ~Printer() = default;
    Printer(const Printer&) = delete;
    Printer& operator=(const Printer&) = delete;

    // One file that check read: its log lines, then its findings or why it cannot be used.
    virtual void checked(const std::string& file, const Kind& kind, const Outcome& outcome) = 0;

    // A path that check found and could not check: it has no kind, or it is nothing that can
    // be read (a symbolic-link loop, a FIFO, a folder that cannot be read).
    virtual void unchecked(const std::string& file, const Problem& problem);

    // The totals of a check that went through a repository: machine formats keep them as data,
    // and when `line`, every format writes them as one line on standard error.
    virtual void summary(const CheckSummary& summary, bool line);

    // The result of a command that is not a check: the JSON form, and the text form as
    // whole lines.
    virtual void result(const Json::Value& json, const std::string& text) = 0;

    // A JSON document as a result (normalize, template): `styled` is written as it is in
    // text, since it is already escaped JSON; machine formats write `json`.
    virtual void document(const Json::Value& json, const std::string& styled) = 0;

    // A problem, shown as one line on standard error in every format.
    virtual void problem(const Problem& problem);

    // Writes what the format keeps until the end. A result or a document is preferred to the
    // files checked on the way, a problem to both. and makes sure standard output took it.
    // Returns the command's exit code, or 2 when standard output could not be written.
    virtual int finish(int exit);

    // The library's lines, those at most as detailed as -v asks for, on standard error.
    virtual void libraryLog(const std::vector<LogLine>& lines);

protected:
    // The line on standard error that names a problem: "FILE:LINE:COLUMN: message", escaped
    // and shortened as every printed line is.
    static std::string problemLine(const Problem& problem);

    std::ostream& out_;
    std::ostream& err_;
};

std::unique_ptr<Printer> makePrinter(Format format, std::ostream& out, std::ostream& err);

// "FILE:LINE:COLUMN" or "FILE" when the line is unknown, as compilers name a place.
std::string placeText(const std::string& file, int line, int column);

}  // namespace zelct
