#include "framework/plugInMgr/pimDeclaration.h"

#include "framework/plugInMgr/pimEx.h"
#include "resmgt/liUtf8.h"
#include "resmgt/osSharedLib.h"

#include <algorithm>
#include <charconv>

namespace Ko {

namespace {

constexpr char const* sectionName = ".koplugin";
constexpr std::string_view magic = "KOPLUGIN";
constexpr std::size_t lengthBytes = 4;
constexpr std::size_t maxSection = 1 << 16;
constexpr std::size_t maxValue = 256;
constexpr std::size_t maxInterfaces = 16;
constexpr std::size_t maxRequired = 64;
constexpr std::ptrdiff_t maxDigits = 6;

[[noreturn]] void refuse(LiString const& problem, int line = __builtin_LINE()) {
    throw PimEx::ExRefused("framework\\plugInMgr\\src\\pimDeclaration", line, "its declaration " + problem);
}

// Lines of a damaged or hostile file are shown to users, so they must not control a terminal.
bool isPlainText(std::string_view text) {
    while (!text.empty()) {
        auto const [code, length] = LiUtf8::first(text);
        bool const isControl = code < 0x20 || (code >= 0x7F && code < 0xA0);
        if (length == 0 || (isControl && code != '\n')) return false;
        text.remove_prefix(length);
    }
    return true;
}

// A file name without directories. It may be that of a plug-in to open, so it must not lead out of the plug-in directories.
bool isFileName(std::string_view name) {
    return name.find_first_of("/\\:") == std::string_view::npos && !name.starts_with('.');
}

std::string_view textOf(std::string_view section) {
    if (!section.starts_with(magic)) refuse("does not begin with " + LiString(magic));
    section.remove_prefix(magic.size());
    if (section.size() < lengthBytes) refuse("is cut off");
    std::size_t length = 0;
    for (std::size_t index = lengthBytes; index-- > 0;)
        length = length << 8 | static_cast<unsigned char>(section[index]);
    section.remove_prefix(lengthBytes);
    if (length > section.size()) refuse("is cut off");
    // The linker joins sections of the same name, and may add zero bytes.
    if (section.find_first_not_of('\0', length) != std::string_view::npos)
        refuse("is followed by another one: a library is one plug-in");
    if (!isPlainText(section.substr(0, length))) refuse("is not a text in UTF-8");
    return section.substr(0, length);
}

bool readNumber(char const*& place, char const* end, int& number) {
    auto const [after, error] = std::from_chars(place, end - place > maxDigits ? place + maxDigits : end, number);
    bool const isNumber = error == std::errc() && *place != '-';
    place = after;
    return isNumber;
}

/// Takes the lines of a declaration.
class Reader {
public:
    PimDeclaration run(std::string_view text) {
        while (!text.empty()) {
            std::string_view const line = text.substr(0, text.find('\n'));
            text.remove_prefix(std::min(text.size(), line.size() + 1));
            if (!line.empty()) take(line);
        }
        for (auto const& [key, value] : _single)
            if (value->empty()) refuse("has no line \"" + LiString(key) + "\"");
        if (_result.interfaces.empty()) refuse("has no line \"interface\"");
        return std::move(_result);
    }

private:
    struct Single {
        std::string_view key;
        LiString* value;
    };

    void take(std::string_view line) {
        auto const sign = line.find('=');
        if (sign == std::string_view::npos) refuse("has a line without an equality sign");
        std::string_view const key = line.substr(0, sign), value = line.substr(sign + 1);
        if (value.empty() || value.size() > maxValue)
            refuse("has a value of " + std::to_string(value.size()) + " bytes");
        for (Single const& single : _single)
            if (key == single.key) takeOnce(single, value);
        if (key == "interface") takeInterface(value);
        if (key == "requires") takeRequired(value);
    }

    static void takeOnce(Single const& single, std::string_view value) {
        if (!single.value->empty()) refuse("has two lines \"" + LiString(single.key) + "\"");
        *single.value = value;
    }

    void takeInterface(std::string_view value) {
        auto interface = PimInterface::parse(value);
        if (!interface) refuse("names no interface and version in \"" + LiString(value) + "\"");
        if (_result.interfaces.size() == maxInterfaces) refuse("names too many interfaces");
        _result.interfaces.push_back(*std::move(interface));
    }

    void takeRequired(std::string_view value) {
        if (!isFileName(value)) refuse("requires \"" + LiString(value) + "\", which is not the name of a plug-in");
        if (_result.required.size() == maxRequired) refuse("requires too many plug-ins");
        _result.required.emplace_back(value);
    }

    PimDeclaration _result;
    Single const _single[3] = {{"name", &_result.name}, {"version", &_result.version}, {"type", &_result.type}};
};

} // namespace

std::optional<PimInterface> PimInterface::parse(std::string_view text) {
    auto const blank = text.rfind(' ');
    if (blank == std::string_view::npos || blank == 0) return std::nullopt;
    PimInterface interface { LiString(text.substr(0, blank)) };
    char const* place = text.data() + blank + 1;
    char const* const end = text.data() + text.size();
    if (!readNumber(place, end, interface.majorNumber)) return std::nullopt;
    if (place == end || *place++ != '.' || !readNumber(place, end, interface.minorNumber) || place != end)
        return std::nullopt;
    return interface;
}

LiString PimInterface::getText() const {
    return name + " " + std::to_string(majorNumber) + "." + std::to_string(minorNumber);
}

bool PimInterface::fits(PimInterface const& offered) const noexcept {
    return name == offered.name && majorNumber == offered.majorNumber && minorNumber <= offered.minorNumber;
}

PimDeclaration PimDeclaration::parse(std::string_view section) {
    return Reader().run(textOf(section));
}

std::optional<PimDeclaration> PimDeclaration::read(OsFilePath const& path) {
    auto const section = OsSharedLib::readSection(path, sectionName, maxSection);
    if (!section) return std::nullopt;
    return parse(*section);
}

} // namespace Ko
