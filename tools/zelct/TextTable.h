#pragma once

#include <algorithm>
#include <ostream>
#include <string>
#include <vector>

namespace zelct {

// Columns of text, padded to their widest cell and two blanks apart; numbers read best
// right-aligned. The last column is not padded, so no line ends in blanks.
class TextTable {
public:
    enum Align { Left, Right };

    explicit TextTable(std::vector<Align> aligns) : aligns_(std::move(aligns)) {}

    void add(std::vector<std::string> row) { rows_.push_back(std::move(row)); }

    void print(std::ostream& out) const {
        std::vector<size_t> widths(aligns_.size(), 0);
        for (const auto& row : rows_) {
            for (size_t i = 0; i < row.size() && i < widths.size(); ++i) {
                widths[i] = std::max(widths[i], row[i].size());
            }
        }
        for (const auto& row : rows_) {
            std::string line;
            for (size_t i = 0; i < row.size() && i < widths.size(); ++i) {
                const std::string padding(widths[i] - row[i].size(), ' ');
                const bool last = i + 1 == row.size();
                if (i > 0) {
                    line += "  ";
                }
                if (aligns_[i] == Right) {
                    line += padding + row[i];
                } else {
                    line += last ? row[i] : row[i] + padding;
                }
            }
            out << line << '\n';
        }
    }

private:
    std::vector<Align> aligns_;
    std::vector<std::vector<std::string>> rows_;
};

}  // namespace zelct
