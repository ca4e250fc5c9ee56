#pragma once

namespace KoInit {

/// Stands for the package "service".
struct service {};

} // namespace KoInit
