#include "image/atomicFile.h"
#include "image/pngCalls.h"
#include "image/pngFile.h"

#include <algorithm>
#include <zlib.h>

namespace compositor {

namespace {

/// Encodes one picture. Prefers speed to size: the compression searches for runs of equal bytes only, in the differences of
/// neighbouring pixels, or of neighbouring rows if these are equal. For photographs the files are no larger.
class PngEncoder {
public:
    PngEncoder(Size size, int colourType, ByteSink const& sink) : PngEncoder(sink) {
        if (!_info) throw std::bad_alloc();
        run([this, size, colourType] {
            png_set_write_fn(_png, this, &PngEncoder::onWrite, &PngEncoder::onFlush);
            png_set_IHDR(_png, _info, static_cast<png_uint_32>(size.width), static_cast<png_uint_32>(size.height), 8,
                colourType, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
            png_set_sRGB(_png, _info, PNG_sRGB_INTENT_PERCEPTUAL);
            png_set_filter(_png, PNG_FILTER_TYPE_BASE, PNG_FILTER_SUB | PNG_FILTER_UP);
            png_set_compression_level(_png, 1);
            png_set_compression_strategy(_png, Z_RLE);
            png_set_compression_buffer_size(_png, std::size_t{1} << 16);
            png_write_info(_png, _info);
        });
        _previous.resize(png_get_rowbytes(_png, _info));
    }
    ~PngEncoder() { png_destroy_write_struct(&_png, &_info); }
    PngEncoder(PngEncoder const&) = delete;
    PngEncoder& operator=(PngEncoder const&) = delete;

    /// @param samples one row, of the colour type.
    void writeRow(std::uint8_t const* samples) {
        bool const isRepeated = _hasPrevious && std::equal(_previous.begin(), _previous.end(), samples);
        int const filter = isRepeated ? PNG_FILTER_UP : PNG_FILTER_SUB;
        run([this, samples, filter] {
            // libpng allocates memory for the filters that are set before the first row.
            if (_hasPrevious) png_set_filter(_png, PNG_FILTER_TYPE_BASE, filter);
            png_write_row(_png, samples);
        });
        if (!isRepeated) std::copy_n(samples, _previous.size(), _previous.begin());
        _hasPrevious = true;
    }
    void finish() {
        run([this] { png_write_end(_png, nullptr); });
    }

private:
    // The destructor runs from here on, also when the sink refuses the first bytes.
    explicit PngEncoder(ByteSink const& sink) : _sink(sink) {
        _png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &_calls, &PngCalls::onError, &PngCalls::onWarning);
        if (_png) _info = png_create_info_struct(_png);
    }

    template <class Call>
    void run(Call const call) {
        _calls.run(_png, call);
    }
    static void onWrite(png_structp png, png_bytep bytes, std::size_t count) {
        auto const* const encoder = static_cast<PngEncoder*>(png_get_io_ptr(png));
        PngCalls::keep(png, [&] { encoder->_sink(std::as_bytes(std::span(bytes, count))); });
    }
    static void onFlush(png_structp) {}

    ByteSink const& _sink;
    PngCalls _calls;
    png_structp _png = nullptr;
    png_infop _info = nullptr;
    std::vector<std::uint8_t> _previous;
    bool _hasPrevious = false;
};

std::uint8_t const* samplesOf(std::span<Colour const> row) {
    return reinterpret_cast<std::uint8_t const*>(row.data());
}

// Properties of all pixels of a picture.
struct Common {
    bool isGrey = true;
    bool isOpaque = true;

    int colourType() const {
        return (isGrey ? PNG_COLOR_TYPE_GRAY : PNG_COLOR_TYPE_RGB) | (isOpaque ? 0 : PNG_COLOR_MASK_ALPHA);
    }
};

Common commonOf(Picture const& picture) {
    // Differences are collected in bits: the loop has no branches.
    std::uint8_t difference = 0, opaque = 0xFF;
    for (int y = 0; y < picture.size().height; ++y)
        for (Colour const& colour : picture.row(y)) {
            difference =
                static_cast<std::uint8_t>(difference | (colour.red ^ colour.green) | (colour.red ^ colour.blue));
            opaque &= colour.alpha;
        }
    return {difference == 0, opaque == 0xFF};
}

// Packs the samples that need to be stored.
void pack(std::span<Colour const> row, Common common, std::uint8_t* next) {
    for (Colour const& colour : row) {
        *next++ = colour.red;
        if (!common.isGrey) {
            *next++ = colour.green;
            *next++ = colour.blue;
        }
        if (!common.isOpaque) *next++ = colour.alpha;
    }
}

} // namespace

bool writePng(std::filesystem::path const& path, Size size, RowSource const& source) {
    checkSize(size);
    AtomicFile file(path);
    ByteSink const sink = [&file](std::span<std::byte const> bytes) { file.write(bytes); };
    PngEncoder encoder(size, PNG_COLOR_TYPE_RGBA, sink);
    std::vector<Colour> row(static_cast<std::size_t>(size.width));
    for (int y = 0; y < size.height; ++y) {
        if (!source(y, row)) return false;
        encoder.writeRow(samplesOf(row));
    }
    encoder.finish();
    file.commit();
    return true;
}

void writePng(Picture const& picture, ByteSink const& sink) {
    Common const common = commonOf(picture);
    PngEncoder encoder(picture.size(), common.colourType(), sink);
    std::vector<std::uint8_t> samples(static_cast<std::size_t>(picture.size().width) * sizeof(Colour));
    for (int y = 0; y < picture.size().height; ++y) {
        pack(picture.row(y), common, samples.data());
        encoder.writeRow(samples.data());
    }
    encoder.finish();
}

} // namespace compositor
