#include "framework/bgTask/bgJobStatistics.h"

#include <utility>

namespace Ko {

BgJobStatistics::BgJobStatistics(LiString submitted, LiString started, LiString ended, float progress)
    : _submitted(std::move(submitted)), _started(std::move(started)), _ended(std::move(ended)), _progress(progress) {}
BgJobStatistics::BgJobStatistics(BgJobStatistics const&) = default;
BgJobStatistics& BgJobStatistics::operator=(BgJobStatistics const&) = default;
BgJobStatistics::~BgJobStatistics() = default;

LiString BgJobStatistics::submitted() const {
    return _submitted;
}
LiString BgJobStatistics::started() const {
    return _started;
}
LiString BgJobStatistics::ended() const {
    return _ended;
}
float BgJobStatistics::progress() const {
    return _progress;
}

} // namespace Ko
