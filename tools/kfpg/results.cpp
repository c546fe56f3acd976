#include "results.h"

#include <cmath>
#include <ctime>
#include <filesystem>
#include <system_error>

namespace kfpg::tool {

std::string makeResultsFolder(const std::string& requested, const std::string& command) {
    std::string path = requested;
    if (path.empty()) {
        char stamp[32];
        const std::time_t now = std::time(nullptr);
        std::strftime(stamp, sizeof stamp, "%Y%m%d-%H%M%S", std::localtime(&now));
        path = "results/" + command + "-" + stamp;
    }
    std::error_code error;
    std::filesystem::create_directories(path, error);
    return error ? std::string() : path;
}

CsvFile::CsvFile(const std::string& path, const std::vector<std::string>& header)
    : file_(std::fopen(path.c_str(), "w")) {
    row(header);
}

CsvFile::~CsvFile() {
    if (file_) std::fclose(file_);
}

void CsvFile::row(const std::vector<std::string>& fields) {
    if (!file_) return;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const std::string& f = fields[i];
        if (f.find_first_of(",\"\n") == std::string::npos) {
            std::fputs(f.c_str(), file_);
        } else {
            std::string quoted = "\"";
            for (char c : f) quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
            std::fputs((quoted + "\"").c_str(), file_);
        }
        std::fputc(i + 1 < fields.size() ? ',' : '\n', file_);
    }
}

std::string csvNumber(double value) {
    if (std::isnan(value)) return "";
    char text[32];
    std::snprintf(text, sizeof text, "%.6g", value);
    return text;
}

}  // namespace kfpg::tool
