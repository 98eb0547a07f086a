#include "Neural/Runtime/NetworkCache.h"

#include <algorithm>
#include <iterator>
#include <new>

#include "Neural/Model/NeuralError.h"

namespace quillmere::neural {

NetworkCache::NetworkCache(WorkerPool& pool, std::size_t bound) : pool_(pool), bound_(bound) {}

Result<std::shared_ptr<const Network>> NetworkCache::load(
    const std::filesystem::path& directory) try {
    // Looked at before the files are opened: should they be replaced in between, the entry gets
    // an identity that no file has any longer.
    const auto model = ModelIdentity::of(directory);
    if (!model) return Network::load(directory, pool_, weights_);  // it says what is wrong

    std::unique_lock lock(mutex_);
    auto entry = find(*model);
    while (entry != entries_.end() && !entry->network) {
        loaded_.wait(lock);
        entry = find(*model);
    }
    if (entry != entries_.end()) {
        entries_.splice(entries_.begin(), entries_, entry);
        letOthersRest();
        return entry->network;
    }

    entry = entries_.insert(entries_.begin(), Entry{*model, nullptr});
    letOthersRest();
    lock.unlock();
    auto network = Network::load(directory, pool_, weights_);
    lock.lock();
    if (network) {
        entry->network = *network;
        dropUnused();
    } else {
        entries_.erase(entry);
    }
    loaded_.notify_all();
    return network;
} catch (const std::bad_alloc&) {
    return makeError(ErrorCode::outOfMemory, "There is not enough memory to load the network.");
}

NetworkCache::Entries::iterator NetworkCache::find(const ModelIdentity& model) {
    return std::find_if(entries_.begin(), entries_.end(),
                        [&](const Entry& entry) { return entry.model == model; });
}

void NetworkCache::letOthersRest() {
    std::for_each(std::next(entries_.begin()), entries_.end(), [](const Entry& entry) {
        if (entry.network) entry.network->rest();
    });
}

void NetworkCache::dropUnused() {
    for (auto entry = entries_.end(); entry != entries_.begin() && weights_.bytes() > bound_;) {
        --entry;
        // A count of one can't grow: new users come by `load` alone, which has to wait.
        if (entry->network.use_count() == 1) entry = entries_.erase(entry);
    }
}

}  // namespace quillmere::neural
