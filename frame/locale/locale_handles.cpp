// The locales of the process; see locale_handles.h.
#include "frame/locale/locale_handles.h"

#include <atomic>
#include <cstring>

#include "base/environment.h"
#include "frame/storage.h"

namespace {

// Handles that were asked for; only ever longer, so that it is searched without a lock.
struct KnownLocale {
    locale_t handle;
    KnownLocale *next;
    char name[]; // terminated
};

std::atomic<KnownLocale *> known;

locale_t find(const char *name)
{
    for (KnownLocale *at = known.load(std::memory_order_acquire); at; at = at->next)
        if (strcmp(at->name, name) == 0) return at->handle;
    return nullptr;
}

} // namespace

void zvkAdoptEnvironmentLocale()
{
    if (setlocale(LC_ALL, "")) return;
    if (const char *language = environmentText("LANG")) setlocale(LC_ALL, language);
}

const char *zvkLocaleName(int category) { return setlocale(category, nullptr); }

const char *zvkSetLocale(int category, const char *name) { return setlocale(category, name); }

locale_t zvkTimeLocale(const char *name)
{
    if (locale_t handle = find(name)) return handle;
    locale_t handle = newlocale(LC_TIME_MASK, name, nullptr);
    if (!handle) return nullptr;
    size_t length = strlen(name) + 1;
    auto *entry = static_cast<KnownLocale *>(zvkAlloc(sizeof(KnownLocale) + length));
    if (!entry) {
        freelocale(handle);
        return nullptr;
    }
    entry->handle = handle;
    memcpy(entry->name, name, length);
    entry->next = known.load(std::memory_order_relaxed);
    while (!known.compare_exchange_weak(entry->next, entry, std::memory_order_release, std::memory_order_relaxed)) {
    }
    return handle;
}

locale_t zvkPlainLocale()
{
    static const locale_t plain = newlocale(LC_ALL_MASK, "C", nullptr);
    return plain;
}
