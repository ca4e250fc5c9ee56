#pragma once

namespace KoInit {

/// Stands for the package of libKOpluginAPI.
struct pluginAPI {};

} // namespace KoInit
