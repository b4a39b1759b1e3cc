#pragma once

#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

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
