#pragma once

namespace KoInit {

/// Stands for the package of libKOresmgt.
struct resmgt {};

} // namespace KoInit
