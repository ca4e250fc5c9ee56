#pragma once

namespace KoInit {

/// Stands for the package "actions".
struct actions {};

} // namespace KoInit
