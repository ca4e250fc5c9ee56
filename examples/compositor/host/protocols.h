#pragma once

#include "base/oPtr.h"
#include "document/document.h"
#include "framework/bgTask/bgJobProtocol.h"
#include "text/statement.h"

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace compositor {

/// Renders the current state of the document into a PNG file, as a job.
[[nodiscard]] Ko::OPtr<Ko::BgJobProtocol> makeRenderProtocol(
    Document const& document, std::filesystem::path const& path);
/// Receives a rendered picture, on the thread of its job.
using PictureSink = std::function<void(Picture picture)>;
/// Renders the current state of the document into a picture.
[[nodiscard]] Ko::OPtr<Ko::BgJobProtocol> makeFlattenProtocol(Document const& document, PictureSink sink);
/// Saves the current state of the document.
[[nodiscard]] Ko::OPtr<Ko::BgJobProtocol> makeSaveProtocol(Document const& document, std::filesystem::path const& path);

/// Reads a picture, has an operator of a plug-in change it, and writes it.
/// @param input the description of the operator's action, and its arguments. @throws InputError if there is no such operator.
[[nodiscard]] Ko::OPtr<Ko::BgJobProtocol> makeFrameProtocol(
    std::filesystem::path const& source, std::filesystem::path const& target, Statement const& input);

/// Receives output lines of a program, those of some time together, on the thread of its job.
using LineSink = std::function<void(Ko::Vector<std::string> const& lines)>;
/// Runs an external program.
/// @param environment "NAME=value" entries, added to the environment of this process.
[[nodiscard]] Ko::OPtr<Ko::BgJobProtocol> makeRunProtocol(
    std::string const& commandLine, std::vector<std::string> const& environment, LineSink sink);
/// Renders the current state of the document, and runs an external program with the picture, a PNG file.
/// @param commandLine "%o" in it stands for the path; see `fillIn`. "%f" stands for a temporary picture beside the path;
///   without one, the program gets the picture through its standard input.
[[nodiscard]] Ko::OPtr<Ko::BgJobProtocol> makeExportProtocol(
    Document const& document, std::filesystem::path const& path, std::string const& commandLine, LineSink sink);

} // namespace compositor
