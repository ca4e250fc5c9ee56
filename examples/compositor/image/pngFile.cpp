#include "image/pngFile.h"

#include "image/atomicFile.h"

#include <algorithm>
#include <cerrno>
#include <csetjmp>
#include <exception>
#include <fstream>
#include <iterator>
#include <png.h>
#include <system_error>
#include <zlib.h>

namespace compositor {

namespace {

// Takes what is encoded; what it throws is kept by the encoder until the library is left.
using Sink = std::function<void(std::byte const* bytes, std::size_t count)>;

/// Encodes one picture. The library reports errors by jumping; every call into it goes through `guard`, whose frames hold
/// nothing that needs destruction.
class PngEncoder {
public:
    PngEncoder(Size size, Sink sink) : _sink(std::move(sink)) {
        _png = png_create_write_struct(PNG_LIBPNG_VER_STRING, this, &PngEncoder::onError, &PngEncoder::onWarning);
        _info = _png ? png_create_info_struct(_png) : nullptr;
        if (!_info) throw std::bad_alloc();
        guard([this, size] {
            png_set_write_fn(_png, this, &PngEncoder::onWrite, &PngEncoder::onFlush);
            png_set_IHDR(_png, _info, static_cast<png_uint_32>(size.width), static_cast<png_uint_32>(size.height), 8,
                PNG_COLOR_TYPE_RGBA, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
            png_set_sRGB(_png, _info, PNG_sRGB_INTENT_PERCEPTUAL);
            png_set_filter(_png, PNG_FILTER_TYPE_BASE, PNG_FILTER_SUB);
            png_set_compression_level(_png, 3);
            png_write_info(_png, _info);
        });
    }
    ~PngEncoder() { png_destroy_write_struct(&_png, &_info); }
    PngEncoder(PngEncoder const&) = delete;
    PngEncoder& operator=(PngEncoder const&) = delete;

    void writeRow(std::span<Colour const> row) {
        auto const* const bytes = reinterpret_cast<png_const_bytep>(row.data());
        guard([this, bytes] { png_write_row(_png, bytes); });
    }
    void finish() {
        guard([this] { png_write_end(_png, nullptr); });
    }

private:
    template <class Call>
    void guard(Call const call) {
        if (!tryCall(call)) {
            if (_error) std::rethrow_exception(_error);
            throw ImageError(_message);
        }
    }
    template <class Call>
    bool tryCall(Call const& call) {
        if (setjmp(png_jmpbuf(_png)) != 0) return false;
        call();
        return true;
    }

    static void onError(png_structp png, png_const_charp message) {
        auto* const encoder = static_cast<PngEncoder*>(png_get_error_ptr(png));
        std::snprintf(encoder->_message, sizeof encoder->_message, "%s", message);
        png_longjmp(png, 1);
    }
    static void onWarning(png_structp, png_const_charp) {}
    static void onWrite(png_structp png, png_bytep bytes, std::size_t count) {
        auto* const encoder = static_cast<PngEncoder*>(png_get_io_ptr(png));
        if (!encoder->take(bytes, count)) png_error(png, "the picture cannot be written");
    }
    static void onFlush(png_structp) {}

    bool take(png_bytep bytes, std::size_t count) noexcept {
        try {
            _sink(reinterpret_cast<std::byte const*>(bytes), count);
            return true;
        } catch (...) {
            _error = std::current_exception();
            return false;
        }
    }

    Sink _sink;
    png_structp _png = nullptr;
    png_infop _info = nullptr;
    std::exception_ptr _error;
    char _message[128] = "";
};

bool encode(Size size, RowSource const& source, Sink sink) {
    PngEncoder encoder(size, std::move(sink));
    std::vector<Colour> row(static_cast<std::size_t>(size.width));
    for (int y = 0; y < size.height; ++y) {
        if (!source(y, row)) return false;
        encoder.writeRow(row);
    }
    encoder.finish();
    return true;
}

std::uint32_t readNumber(std::span<std::byte const> bytes) {
    std::uint32_t number = 0;
    for (std::byte const byte : bytes.first(4))
        number = number << 8 | static_cast<std::uint32_t>(byte);
    return number;
}

// The decoder passes over chunks that it does not need, and stops reading at the last pixel.
void checkChunks(std::span<std::byte const> bytes) {
    std::string_view type;
    for (auto rest = bytes.subspan(8); type != "IEND";) {
        std::size_t const length = rest.size() < 12 ? rest.size() : readNumber(rest);
        if (rest.size() < 12 || rest.size() - 12 < length) throw ImageError("the PNG picture is cut off");
        auto const* const begin = reinterpret_cast<unsigned char const*>(rest.data()) + 4;
        type = {reinterpret_cast<char const*>(begin), 4};
        if (crc32(crc32(0, nullptr, 0), begin, static_cast<uInt>(length + 4)) != readNumber(rest.subspan(length + 8)))
            throw ImageError("the PNG picture is damaged: a checksum is wrong");
        rest = rest.subspan(length + 12);
    }
}

} // namespace

std::vector<std::byte> readFile(std::filesystem::path const& path) {
    std::error_code error;
    if (std::filesystem::is_directory(path, error))
        throw ImageError(path.string() + " cannot be read: it is a directory");
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    std::vector<char> const bytes{std::istreambuf_iterator<char>(file), {}};
    if (!file)
        throw ImageError(
            path.string() + " cannot be read: " + std::generic_category().message(errno != 0 ? errno : EIO));
    auto const* const begin = reinterpret_cast<std::byte const*>(bytes.data());
    return {begin, begin + bytes.size()};
}

bool isPng(std::span<std::byte const> bytes) {
    return bytes.size() >= 8 && png_sig_cmp(reinterpret_cast<png_const_bytep>(bytes.data()), 0, 8) == 0;
}

Picture decodePng(std::span<std::byte const> bytes) {
    if (!isPng(bytes)) throw ImageError("it is not a PNG picture");
    checkChunks(bytes);
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    std::unique_ptr<png_image, decltype(&png_image_free)> const release(&image, &png_image_free);
    auto const check = [&image](int succeeded) {
        if (!succeeded) throw ImageError(std::string("the PNG picture is damaged: ") + image.message);
    };
    check(png_image_begin_read_from_memory(&image, bytes.data(), bytes.size()));
    image.format = PNG_FORMAT_RGBA;
    image.flags |= PNG_IMAGE_FLAG_16BIT_sRGB;
    int const limit = 1 << 30;
    Picture picture({static_cast<int>(std::min<png_uint_32>(image.width, limit)),
        static_cast<int>(std::min<png_uint_32>(image.height, limit))});
    check(png_image_finish_read(&image, nullptr, picture.row(0).data(), 0, nullptr));
    return picture;
}

bool writePng(std::filesystem::path const& path, Size size, RowSource const& source) {
    checkSize(size);
    AtomicFile file(path);
    bool const whole =
        encode(size, source, [&file](std::byte const* bytes, std::size_t count) { file.write(bytes, count); });
    if (whole) file.commit();
    return whole;
}

std::vector<std::byte> encodePng(Picture const& picture) {
    std::vector<std::byte> result;
    auto const source = [&picture](int y, std::span<Colour> row) {
        std::ranges::copy(picture.row(y), row.begin());
        return true;
    };
    encode(picture.size(), source,
        [&result](std::byte const* bytes, std::size_t count) { result.insert(result.end(), bytes, bytes + count); });
    return result;
}

} // namespace compositor
