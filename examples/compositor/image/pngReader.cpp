#include "image/pngCalls.h"
#include "image/pngFile.h"

#include <algorithm>
#include <array>
#include <limits>

namespace compositor {

namespace {

constexpr std::size_t signatureLength = 8;

// The best compression of deflate: 258 bytes in 2 bits.
constexpr std::uint64_t bestCompression = 1032;

/// Decodes one picture of a stream.
class PngDecoder {
public:
    PngDecoder(std::istream& stream, std::uint64_t length) : _stream(stream), _left(length) {
        _png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &_calls, &PngCalls::onError, &PngCalls::onWarning);
        if (_png) _info = png_create_info_struct(_png);
        if (!_info) {
            png_destroy_read_struct(&_png, nullptr, nullptr);
            throw std::bad_alloc();
        }
        png_set_read_fn(_png, this, &PngDecoder::onRead);
    }
    ~PngDecoder() { png_destroy_read_struct(&_png, &_info, nullptr); }
    PngDecoder(PngDecoder const&) = delete;
    PngDecoder& operator=(PngDecoder const&) = delete;

    Picture read() {
        readHeader();
        checkLength();
        Picture picture(_size);
        readRows(picture);
        return picture;
    }
    /// The number of bytes that have not been read.
    std::uint64_t left() const { return _left; }

private:
    void readHeader() {
        run([this] {
            png_set_crc_action(_png, PNG_CRC_ERROR_QUIT, PNG_CRC_ERROR_QUIT);
            png_set_user_limits(_png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
            skipTexts();
            png_read_info(_png, _info);
        });
        _size = {
            static_cast<int>(png_get_image_width(_png, _info)), static_cast<int>(png_get_image_height(_png, _info))};
    }
    // Ignores all chunks that describe the picture, except for its gamma: long texts would take much memory.
    void skipTexts() {
        png_set_keep_unknown_chunks(_png, PNG_HANDLE_CHUNK_NEVER, nullptr, -1);
        png_set_keep_unknown_chunks(
            _png, PNG_HANDLE_CHUNK_AS_DEFAULT, reinterpret_cast<png_const_bytep>("gAMA\0sRGB"), 2);
    }
    // Called before memory is allocated for the pixels.
    void checkLength() const {
        checkSize(_size);
        std::uint64_t const content =
            std::uint64_t{png_get_rowbytes(_png, _info)} * static_cast<std::uint64_t>(_size.height);
        if (content / bestCompression > _left)
            throw ImageError("the PNG picture is cut off: it is too short for " + std::to_string(_size.width) + " x " +
                             std::to_string(_size.height) + " pixels");
    }
    void readRows(Picture& picture) {
        int passes = 0;
        run([this, &passes] {
            png_set_expand(_png);
            png_set_scale_16(_png);
            png_set_gray_to_rgb(_png);
            png_set_add_alpha(_png, 0xFF, PNG_FILLER_AFTER);
            png_set_alpha_mode(_png, PNG_ALPHA_PNG, PNG_DEFAULT_sRGB);
            passes = png_set_interlace_handling(_png);
            png_read_update_info(_png, _info);
        });
        for (int pass = 0; pass < passes; ++pass)
            for (int y = 0; y < _size.height; ++y) {
                auto* const row = reinterpret_cast<png_bytep>(picture.row(y).data());
                run([this, row] { png_read_row(_png, row, nullptr); });
            }
        run([this] { png_read_end(_png, nullptr); });
    }

    template <class Call>
    void run(Call const call) try {
        _calls.run(_png, call);
    } catch (ImageError const& error) {
        throw ImageError(std::string("the PNG picture is ") + (_isCutOff ? "cut off" : "damaged: ") +
                         (_isCutOff ? "" : error.what()));
    }

    static void onRead(png_structp png, png_bytep bytes, std::size_t count) {
        auto* const decoder = static_cast<PngDecoder*>(png_get_io_ptr(png));
        PngCalls::keep(png, [&] { decoder->take(reinterpret_cast<char*>(bytes), count); });
    }
    void take(char* bytes, std::size_t count) {
        _isCutOff = count > _left || !_stream.read(bytes, static_cast<std::streamsize>(count));
        if (_isCutOff) throw ImageError("cut off");
        _left -= count;
    }

    std::istream& _stream;
    std::uint64_t _left;
    PngCalls _calls;
    png_structp _png = nullptr;
    png_infop _info = nullptr;
    Size _size;
    bool _isCutOff = false;
};

} // namespace

bool isPng(std::istream& stream) {
    std::array<char, signatureLength> begin{};
    auto const place = stream.tellg();
    stream.read(begin.data(), begin.size());
    bool const isWhole = stream.gcount() == static_cast<std::streamsize>(begin.size());
    stream.clear();
    stream.seekg(place);
    return isWhole && png_sig_cmp(reinterpret_cast<png_const_bytep>(begin.data()), 0, begin.size()) == 0;
}

Picture readPng(std::istream& stream, std::uint64_t length) {
    if (length < signatureLength || !isPng(stream)) throw ImageError("it is not a PNG picture");
    PngDecoder decoder(stream, length);
    Picture picture = decoder.read();
    stream.ignore(static_cast<std::streamsize>(decoder.left()));
    return picture;
}

} // namespace compositor
