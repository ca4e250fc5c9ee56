#pragma once

namespace KoInit {

/// Stands for the package of libKObase.
struct base {};

} // namespace KoInit
