#pragma once

namespace KoInit {

/// Stands for the package of libKOprimitives.
struct primitives {};

} // namespace KoInit
