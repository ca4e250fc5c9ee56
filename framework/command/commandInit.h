#pragma once

namespace KoInit {

/// Stands for the package "command".
struct command {};

} // namespace KoInit
