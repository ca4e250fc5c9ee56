#pragma once

namespace KoInit {

/// Stands for the package "dragAndDrop".
struct dragAndDrop {};

} // namespace KoInit
