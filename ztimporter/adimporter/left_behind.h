#ifndef ZTIMPORTER_ADIMPORTER_LEFT_BEHIND_H
#define ZTIMPORTER_ADIMPORTER_LEFT_BEHIND_H

#if defined(__SANITIZE_ADDRESS__)
#define ZT_HAS_LEAK_CHECK
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ZT_HAS_LEAK_CHECK
#endif
#endif

#ifdef ZT_HAS_LEAK_CHECK
#include <sanitizer/lsan_interface.h>
#endif

namespace adimporter {

// Tells the leak check of a build with the address sanitizer that an object (which may be null) is
// left behind on purpose; other builds have no such check. Called on the ways out that leave the
// object behind, not where it is made, so that a leak on any other way out is still found.
inline void LeaveBehind([[maybe_unused]] const void* object) {
#ifdef ZT_HAS_LEAK_CHECK
    if (object != nullptr) {
        __lsan_ignore_object(object);
    }
#endif
}

}  // namespace adimporter

#endif
