#pragma once

#include "service/request_server.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace conferix {

/// What a service counts, as Prometheus reads it. For several threads. Nothing that a client sent becomes a
/// name or a label.
class TServiceMetrics {
  public:
    explicit TServiceMetrics(std::string version) : version_(std::move(version)) {}

    /// A request that was answered.
    void Count(const THttpExchange& exchange);
    /// A file that was judged; `verdict`: a word of the program's own.
    void CountVerdict(const std::string& verdict);
    void CountCorrections(std::size_t corrections);

    /// In the text format, version 0.0.4.
    std::string Text(const THttpLoad& load) const;

  private:
    /// How long requests took: how many fell into each bucket, one more than there are bounds.
    struct TDurations {
        std::vector<std::uint64_t> Buckets;
        std::uint64_t Count = 0;
        double Sum = 0;
    };

    mutable std::mutex mutex_;
    std::string version_;
    std::map<std::pair<std::string, unsigned>, std::uint64_t> requests_; ///< by route and status
    std::map<std::string, TDurations> durations_;                        ///< by route
    std::map<std::string, std::uint64_t> verdicts_;
    std::uint64_t corrections_ = 0;
    std::uint64_t received_ = 0;
    std::uint64_t sent_ = 0;
};

} // namespace conferix
