#pragma once

namespace KoInit {

/// Stands for the package of libKOscriptingAPI.
struct scriptingAPI {};

} // namespace KoInit
