#pragma once

#include "tests/support/temporaryFolder.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

/// Functions shared by the fuzz targets.
///
/// A target reads its input as text in fields, so that people can write and read seeds. The result of the library is
/// compared with a model of a few lines, which may be slow but has to be obvious.
namespace KoFuzz {

/// The only place where a target writes; removed when the process ends normally.
using Folder = KoTest::TemporaryFolder;

/// Reports a difference; the fuzzer keeps the input that led to it.
inline void expect(bool isAsPromised, char const* promise) {
    if (isAsPromised) return;
    std::fprintf(stderr, "Broken: %s\n", promise);
    std::abort();
}

inline std::string_view textOf(std::uint8_t const* data, std::size_t size) {
    return {reinterpret_cast<char const*>(data), size};
}

/// The fields of an input, which lines of "--" divide. Missing fields are empty.
inline std::vector<std::string> fieldsOf(std::string_view input, std::size_t fewest) {
    constexpr std::string_view divider = "\n--\n";
    std::vector<std::string> fields;
    for (std::size_t end; (end = input.find(divider)) != input.npos; input.remove_prefix(end + divider.size()))
        fields.emplace_back(input.substr(0, end));
    fields.emplace_back(input);
    fields.resize(std::max(fewest, fields.size()));
    return fields;
}

/// The text up to the first zero byte, as a program receives it.
inline std::string cText(std::string const& text) {
    return text.c_str();
}

/// A line of the compositor's script language that consists of these words.
inline std::string quotedWords(std::vector<std::string> const& words) {
    std::string text;
    for (std::string const& word : words) {
        text += '"';
        for (char const character : word)
            text += (character == '"' || character == '\\' ? "\\" : "") + std::string(1, character);
        text += "\" ";
    }
    return text;
}

} // namespace KoFuzz
