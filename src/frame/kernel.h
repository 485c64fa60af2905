// Kernels that exist once per instruction set, and the choice among them.
#ifndef QELCV_FRAME_KERNEL_H_
#define QELCV_FRAME_KERNEL_H_

#include <hwy/targets.h>

#include <cstdint>

#include "frame/image.h"
#include "frame/threads.h"

namespace qel {

// A kernel that was compiled once per instruction set. As a function pointer it is the version for this machine.
template <class Fn>
class Kernel {
public:
    constexpr explicit Kernel(Fn* const* versions) : versions_(versions) {}

    operator Fn*() const {
        hwy::ChosenTarget& machine = hwy::GetChosenTarget();
        if (!machine.IsInitialized()) machine.Update(hwy::SupportedTargets());
        return versions_[machine.GetIndex()];
    }

private:
    Fn* const* versions_;
};

// True where a run over `rows` touches at least as much memory as the largest cache holds, or where that is not known.
inline bool outgrowsCache(int bytesPerPixel, QelSize rows) {
    return int64_t{bytesPerPixel} * rows.width * rows.height >= owncvGetCacheSize();
}

// A kernel and its twin whose stores bypass the cache, which pays from the cache's size on. The results are the same.
template <class Fn>
struct ByVolume {
    const Kernel<Fn>& plain;
    const Kernel<Fn>& streaming;
    int bytesPerPixel;
};
template <class Fn>
ByVolume(const Kernel<Fn>&, const Kernel<Fn>&, int) -> ByVolume<Fn>;

template <class Fn>
Fn* pick(const Kernel<Fn>& kernel, QelSize) {
    return kernel;
}

template <class Fn>
Fn* pick(const ByVolume<Fn>& kernels, QelSize rows) {
    return outgrowsCache(kernels.bytesPerPixel, rows) ? kernels.streaming : kernels.plain;
}

// Defines the kernel `name`, declared in the family's header, from its versions in the namespaces of the instruction
// sets.
#define QEL_KERNEL(name) \
    HWY_EXPORT(name);    \
    constinit decltype(name) name(HWY_DISPATCH_TABLE(name))

}  // namespace qel

#endif
