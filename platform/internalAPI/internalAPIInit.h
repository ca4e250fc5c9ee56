#pragma once

namespace KoInit {

/// Stands for the package of libKOinternalAPI.
struct internalAPI {};

} // namespace KoInit
