#include "storage/DatabaseOwner.h"

#include <map>
#include <mutex>

#include "os/OS.h"
#include "storage/status.h"
#include "system/QuillonException.h"
#include "system/unicode.h"

namespace qve {

namespace {

constexpr unsigned ownerSlot = 2;

}  // namespace

std::shared_ptr<const DatabaseOwner> DatabaseOwner::Take(const FileLock& lock, const std::wstring& root) {
    static std::mutex mutex;
    static std::map<FileLock::Identity, std::weak_ptr<const DatabaseOwner>> owners;

    std::lock_guard guard(mutex);
    std::erase_if(owners, [](const auto& known) { return known.second.expired(); });
    std::weak_ptr<const DatabaseOwner>& known = owners[lock.GetIdentity()];
    if (auto owner = known.lock()) return owner;

    FileLock own(lock.GetPath(), false);
    if (own.GetIdentity() != lock.GetIdentity() || !own.IsWritable() || !own.TryLock(ownerSlot, true)) {
        throw QVE_RuntimeError(status::DatabaseOwner_taken,
                               "The database \"" + narrow(root) + "\" is being written by another server (process " +
                                   std::to_string(lock.ReadOwner()) +
                                   "). It can be read here, and written once that server has closed it.");
    }
    own.WriteOwner(static_cast<uint64_t>(OS::getpid()));
    auto owner = std::make_shared<const DatabaseOwner>(std::move(own));
    known = owner;
    return owner;
}

}  // namespace qve
