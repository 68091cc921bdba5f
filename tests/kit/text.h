// The test kit's text and file helpers, free of GoogleTest: the fuzz targets use them too.
#pragma once

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace kit {

inline std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

inline void writeFile(const std::string& path, const std::string& text) { std::ofstream(path, std::ios::binary) << text; }

inline std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

// How often part occurs in text.
inline size_t count(const std::string& text, const std::string& part) {
    size_t n = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++n;
    return n;
}

}  // namespace kit
