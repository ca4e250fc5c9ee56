#pragma once

namespace KoInit {

/// Stands for the package "bgTask".
struct bgTask {};

} // namespace KoInit
