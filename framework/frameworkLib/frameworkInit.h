#pragma once

namespace KoInit {

/// Stands for the package "framework": all of this library.
struct framework {};

} // namespace KoInit
