#pragma once

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <json/json.h>

inline void writeFile(const std::string& path, const std::string& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

inline std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// Parses a JSON text written in a test; fails loudly on a typo.
inline Json::Value parseJson(const std::string& text) {
    Json::CharReaderBuilder builder;
    Json::Value root;
    std::string errors;
    std::istringstream stream(text);
    if (!Json::parseFromStream(builder, stream, &root, &errors)) {
        throw std::runtime_error("bad test JSON: " + errors);
    }
    return root;
}

// Every name in the folder, sorted, so a test sees a temporary that was left behind.
inline std::vector<std::string> namesIn(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

// The line the file stores log when they cannot open or write the file.
inline std::string saveLine(const std::string& path, const std::string& what, int err) {
    return "ERR::Saving JSON to file '" + path + ":' failed to " + what + " errno='" +
           std::to_string(err) + "' ('" + std::strerror(err) + "')";
}
