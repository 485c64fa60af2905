#include "core/system.h"

#include <omp.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <compare>
#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace qel {

namespace {

// A path below a root, cut at the longest that the system takes.
class Path {
public:
    __attribute__((format(printf, 3, 4))) Path(const char* root, const char* format, ...) {
        const int length = std::max(std::snprintf(text_, sizeof text_, "%s", root), 0);
        if (length >= PATH_MAX) return;
        std::va_list arguments;
        va_start(arguments, format);
        std::vsnprintf(text_ + length, sizeof text_ - size_t(length), format, arguments);
        va_end(arguments);
    }
    const char* text() const { return text_; }

private:
    char text_[PATH_MAX];
};

// The lines of a file that the kernel makes up, without their line ends.
class Lines {
public:
    explicit Lines(const Path& path) : file_(std::fopen(path.text(), "re")) {}
    ~Lines() {
        if (file_) std::fclose(file_);
        std::free(line_);
    }
    Lines(const Lines&) = delete;
    Lines& operator=(const Lines&) = delete;

    // The next line, or null after the last one. It may be changed, and lives until the next call.
    char* next() {
        if (!file_ || getline(&line_, &capacity_, file_) < 0) return nullptr;
        line_[std::strcspn(line_, "\n")] = '\0';
        return line_;
    }

private:
    std::FILE* file_;
    char* line_ = nullptr;
    size_t capacity_ = 0;
};

// Reads a decimal number without a sign, saturating, and moves *pText behind it.
bool takeNumber(const char** pText, int64_t* pValue) {
    const char* p = *pText;
    int64_t value = 0;
    for (; *p >= '0' && *p <= '9'; ++p) {
        const int digit = *p - '0';
        value = value > (INT64_MAX - digit) / 10 ? INT64_MAX : value * 10 + digit;
    }
    if (p == *pText) return false;
    *pText = p;
    *pValue = value;
    return true;
}

// Reads a file that holds one number.
bool readNumber(const Path& path, int64_t* pValue) {
    Lines lines(path);
    const char* text = lines.next();
    return text && takeNumber(&text, pValue) && *text == '\0';
}

int processorsFor(int64_t quota, int64_t period) {
    if (quota < 1 || period < 1) return INT_MAX;
    const int64_t processors = quota / period + (quota % period != 0);
    return static_cast<int>(std::min<int64_t>(processors, INT_MAX));
}

// "max 100000" or "150000 100000".
int quotaOfUnifiedGroup(const char* directory) {
    Lines lines(Path(directory, "/cpu.max"));
    const char* text = lines.next();
    int64_t quota = 0;
    int64_t period = 0;
    if (!text || !takeNumber(&text, &quota) || *text++ != ' ' || !takeNumber(&text, &period)) return INT_MAX;
    return processorsFor(quota, period);
}

// No limit is a quota of -1, which is not a number here.
int quotaOfLegacyGroup(const char* directory) {
    int64_t quota = 0;
    int64_t period = 0;
    if (!readNumber(Path(directory, "/cpu.cfs_quota_us"), &quota)) return INT_MAX;
    if (!readNumber(Path(directory, "/cpu.cfs_period_us"), &period)) return INT_MAX;
    return processorsFor(quota, period);
}

// True where `word` is one of the comma-separated words of `list`.
bool listHas(const char* list, const char* word) {
    const size_t length = std::strlen(word);
    while (list) {
        if (std::strncmp(list, word, length) == 0 && (list[length] == ',' || list[length] == '\0')) return true;
        list = std::strchr(list, ',');
        if (list) ++list;
    }
    return false;
}

// Finds the path of this process's group in /proc/self/cgroup, "0::/path" or "4:cpu,cpuacct:/path".
bool findGroup(const char* root, bool unified, char (&group)[PATH_MAX]) {
    Lines lines(Path(root, "/proc/self/cgroup"));
    while (char* const line = lines.next()) {
        char* const controllers = std::strchr(line, ':');
        char* const path = controllers ? std::strchr(controllers + 1, ':') : nullptr;
        if (!path) continue;
        *path = '\0';
        if (unified ? controllers[1] == '\0' : listHas(controllers + 1, "cpu")) {
            std::snprintf(group, sizeof group, "%s", path + 1);
            return true;
        }
    }
    return false;
}

// A mounted tree of control groups: where it is, and which group stands at its top.
struct GroupTree {
    char mountPoint[PATH_MAX];
    char top[PATH_MAX];
};

// Finds the tree in /proc/self/mountinfo: "31 23 0:28 /top /mount/point rw - cgroup2 source rw,cpu".
bool findGroupTree(const char* root, bool unified, GroupTree* pTree) {
    Lines lines(Path(root, "/proc/self/mountinfo"));
    while (char* const line = lines.next()) {
        char* const filesystem = std::strstr(line, " - ");
        if (!filesystem) continue;
        *filesystem = '\0';
        char type[16];
        char options[256];
        if (std::sscanf(filesystem + 3, "%15s %*s %255s", type, options) != 2) continue;
        if (unified ? std::strcmp(type, "cgroup2") != 0 : std::strcmp(type, "cgroup") != 0 || !listHas(options, "cpu"))
            continue;
        static_assert(PATH_MAX == 4096, "the widths below");
        if (std::sscanf(line, "%*s %*s %*s %4095s %4095s", pTree->top, pTree->mountPoint) == 2) return true;
    }
    return false;
}

// The part of `group` below `top`. A group that is not below it is another namespace's name for the top.
const char* below(const char* top, const char* group) {
    const size_t length = std::strcmp(top, "/") == 0 ? 0 : std::strlen(top);
    const bool inside = std::strncmp(group, top, length) == 0 && (group[length] == '/' || group[length] == '\0');
    return inside ? group + length : "";
}

// The smallest quota from this process's group up to the top of its tree.
int groupQuota(const char* root, bool unified, int (*quotaOfGroup)(const char* directory)) {
    char group[PATH_MAX];
    GroupTree tree;
    if (!findGroup(root, unified, group) || !findGroupTree(root, unified, &tree)) return INT_MAX;

    const char* const inside = below(tree.top, group);
    int quota = INT_MAX;
    for (size_t length = std::strlen(inside);; --length) {
        if (length > 0 && inside[length] != '/' && inside[length] != '\0') continue;
        const Path directory(root, "%s%.*s", tree.mountPoint, static_cast<int>(length), inside);
        quota = std::min(quota, quotaOfGroup(directory.text()));
        if (length == 0) return quota;
    }
}

struct Core {
    int64_t package;
    int64_t die;
    int64_t core;

    bool sameDie(const Core& other) const { return package == other.package && die == other.die; }
    bool operator==(const Core&) const = default;
    auto operator<=>(const Core&) const = default;
};

bool readCore(const char* root, int cpu, Core* pCore) {
    constexpr char kTopology[] = "/sys/devices/system/cpu/cpu%d/topology/%s";
    // Kernels before 5.2 know no dies.
    if (!readNumber(Path(root, kTopology, cpu, "die_id"), &pCore->die)) pCore->die = 0;
    return readNumber(Path(root, kTopology, cpu, "physical_package_id"), &pCore->package) &&
           readNumber(Path(root, kTopology, cpu, "core_id"), &pCore->core);
}

// "48K", "32M" or a count of bytes; 0 for anything else.
int cacheBytes(const Path& path) {
    Lines lines(path);
    const char* text = lines.next();
    int64_t value = 0;
    if (!text || !takeNumber(&text, &value)) return 0;
    const int shift = *text == 'K' ? 10 : *text == 'M' ? 20 : *text == 'G' ? 30 : 0;
    if (text[shift > 0] != '\0') return 0;
    return value > INT_MAX >> shift ? INT_MAX : static_cast<int>(value << shift);
}

}  // namespace

CpuSet::CpuSet(int capacity)
    : bytes_(CPU_ALLOC_SIZE(capacity)), bits_(capacity > 0 ? CPU_ALLOC(static_cast<size_t>(capacity)) : nullptr) {
    if (bits_) CPU_ZERO_S(bytes_, bits_.get());
}

CpuSet allowedCpus() {
    // The mask of the first thread, so that it does not matter which thread asks. The kernel refuses a set that is
    // smaller than its own.
    constexpr int kMost = 1 << 20;
    int capacity = CPU_SETSIZE;
    CpuSet cpus(capacity);
    while (sched_getaffinity(getpid(), cpus.bytes(), cpus.bits()) != 0) {
        if (errno != EINVAL || capacity >= kMost) return CpuSet();
        cpus = CpuSet(capacity *= 2);
    }

    // The OpenMP runtime may have bound the first thread to one of its places: it runs on all of them.
    for (int place = 0; place < omp_get_num_places(); ++place) {
        const int procs = omp_get_place_num_procs(place);
        const std::unique_ptr<int, Free> ids(static_cast<int*>(std::calloc(size_t(std::max(procs, 1)), sizeof(int))));
        if (!ids) break;
        omp_get_place_proc_ids(place, ids.get());
        for (int i = 0; i < procs; ++i) cpus.add(ids.get()[i]);
    }
    return cpus;
}

int cpuQuota(const char* root) {
    return std::min(groupQuota(root, true, quotaOfUnifiedGroup), groupQuota(root, false, quotaOfLegacyGroup));
}

int coresOnLargestDie(const char* root, const CpuSet& cpus) {
    const int count = cpus.count();
    const std::unique_ptr<Core, Free> cores(static_cast<Core*>(std::calloc(size_t(count) + 1, sizeof(Core))));
    if (!cores) return 0;
    Core* end = cores.get();
    for (int cpu = 0; cpu < cpus.capacity(); ++cpu) {
        if (cpus.has(cpu) && !readCore(root, cpu, end++)) return 0;
    }
    std::sort(cores.get(), end);
    end = std::unique(cores.get(), end);

    int most = 0;
    int onThisDie = 0;
    for (const Core* core = cores.get(); core != end; ++core) {
        onThisDie = onThisDie > 0 && core->sameDie(core[-1]) ? onThisDie + 1 : 1;
        most = std::max(most, onThisDie);
    }
    return most;
}

int largestCacheBytes(const char* root, const CpuSet& cpus) {
    constexpr int kMostCaches = 16;
    int largest = 0;
    for (int cpu = 0; cpu < cpus.capacity(); ++cpu) {
        for (int index = 0; cpus.has(cpu) && index < kMostCaches; ++index) {
            const Path path(root, "/sys/devices/system/cpu/cpu%d/cache/index%d/size", cpu, index);
            if (access(path.text(), F_OK) != 0) break;
            largest = std::max(largest, cacheBytes(path));
        }
    }
    return largest;
}

}  // namespace qel
