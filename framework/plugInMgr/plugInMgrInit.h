#pragma once

namespace KoInit {

/// Stands for the package "plugInMgr".
struct plugInMgr {};

} // namespace KoInit
