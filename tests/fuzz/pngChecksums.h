#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>
#include <zlib.h>

namespace KoFuzz {

inline std::uint32_t readNumber(std::uint8_t const* bytes) {
    return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 | std::uint32_t{bytes[2]} << 8 | bytes[3];
}

inline void writeNumber(std::uint8_t* bytes, std::uint32_t number) {
    for (int index = 3; index >= 0; --index, number >>= 8)
        bytes[index] = static_cast<std::uint8_t>(number & 0xFF);
}

/// Calls `visit(type, content)` for the well-formed chunks of each PNG picture in the bytes. The four bytes after the content
/// are the checksum.
template <class Visit>
void visitChunks(std::span<std::uint8_t> bytes, Visit visit) {
    constexpr std::string_view signature = "\x89PNG\r\n\x1A\n";
    auto const text = [&] { return std::string_view(reinterpret_cast<char const*>(bytes.data()), bytes.size()); };
    for (std::size_t begin; (begin = text().find(signature)) != std::string_view::npos;) {
        bytes = bytes.subspan(begin + signature.size());
        while (bytes.size() >= 12 && readNumber(bytes.data()) <= bytes.size() - 12) {
            std::size_t const length = readNumber(bytes.data());
            std::string_view const type = text().substr(4, 4);
            visit(type, bytes.subspan(8, length));
            bytes = bytes.subspan(length + 12);
            if (type == "IEND") break;
        }
    }
}

/// Decoders stop at a wrong checksum, and would not reach the mutations after it.
inline void repairChecksums(std::span<std::uint8_t> bytes) {
    visitChunks(bytes, [](std::string_view, std::span<std::uint8_t> content) {
        auto const checksum = crc32(crc32(0, nullptr, 0), content.data() - 4, static_cast<uInt>(content.size() + 4));
        writeNumber(content.data() + content.size(), static_cast<std::uint32_t>(checksum));
    });
}

/// Whether all pictures are small. Large pictures are valid, but slow.
inline bool areSmall(std::span<std::uint8_t> bytes) {
    bool result = true;
    visitChunks(bytes, [&](std::string_view type, std::span<std::uint8_t> content) {
        if (type != "IHDR" || content.size() < 8) return;
        std::uint64_t const width = readNumber(content.data()), height = readNumber(content.data() + 4);
        result = result && (width * height <= 1 << 16 || width > 65535 || height > 65535 || width * height > 1 << 28);
    });
    return result;
}

} // namespace KoFuzz
