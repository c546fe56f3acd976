// The CSV files a kfpg run leaves behind, in one results folder per run.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace kfpg::tool {

// Creates the folder (and its parents): `requested` if given, else
// results/<command>-<date>-<time> under the working directory. Returns its
// path, or an empty string when it cannot be created.
std::string makeResultsFolder(const std::string& requested, const std::string& command);

// A CSV file written row by row; fields holding a comma, a quote or a line
// break are quoted.
class CsvFile {
public:
    CsvFile(const std::string& path, const std::vector<std::string>& header);
    ~CsvFile();
    CsvFile(const CsvFile&) = delete;
    CsvFile& operator=(const CsvFile&) = delete;
    bool ok() const { return file_ != nullptr; }
    void row(const std::vector<std::string>& fields);

private:
    std::FILE* file_;
};

// A number as a CSV field: six significant digits, empty for NaN.
std::string csvNumber(double value);

}  // namespace kfpg::tool
