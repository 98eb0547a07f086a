// Loaded networks, kept so that loading one again costs next to nothing.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <list>
#include <memory>
#include <mutex>

#include "Base/Result.h"
#include "Base/WorkerPool.h"
#include "Neural/Model/ModelIdentity.h"
#include "Neural/Runtime/Network.h"
#include "Neural/Runtime/WeightsTable.h"

namespace quillmere::neural {

/// Gives out one shared network for each compiled model, and equal weights of different networks
/// are stored once. A program wants one such cache. Safe to use from any thread.
///
/// When a network was loaded and all weights together exceed the bound, those networks go that
/// nobody uses, the least recently loaded first. A network in use never goes, and neither does the
/// one that was loaded last: a video whose only network is larger than the bound loads it once.
/// Whenever a network is asked for, the others give the memory of their last runs back.
class NetworkCache {
public:
    static constexpr std::size_t kDefaultBound = std::size_t{1} << 30;

    /// `pool` must outlive the networks; the cache itself need not. `bound` is in bytes.
    explicit NetworkCache(WorkerPool& pool, std::size_t bound = kDefaultBound);
    NetworkCache(const NetworkCache&) = delete;
    NetworkCache& operator=(const NetworkCache&) = delete;

    /// As `Network::load`, errors included, where the model in `directory` is new or changed, or
    /// its network went. Who asks for a network that is just being loaded waits for it; others
    /// don't. A failure is not kept: the next call tries again.
    Result<std::shared_ptr<const Network>> load(const std::filesystem::path& directory);

    /// The memory of all prepared weights, kept or in use.
    std::size_t bytes() const { return weights_.bytes(); }
    /// How many convolutions were prepared so far.
    std::uint64_t preparations() const { return weights_.additions(); }

private:
    struct Entry {
        ModelIdentity model;
        std::shared_ptr<const Network> network;  // null while it is being loaded
    };
    using Entries = std::list<Entry>;

    Entries::iterator find(const ModelIdentity& model);
    void dropUnused();
    /// All but the first entry's.
    void letOthersRest();

    WorkerPool& pool_;
    const std::size_t bound_;
    WeightsTable weights_;
    std::mutex mutex_;  // guards the entries
    std::condition_variable loaded_;
    Entries entries_;  // the most recently loaded first
};

}  // namespace quillmere::neural
