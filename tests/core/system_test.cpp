#include "core/system.h"

#include <gtest/gtest.h>
#include <omp.h>

#include <climits>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

// A directory that stands for "/", with the files that a test puts there.
class System : public testing::Test {
protected:
    System() {
        std::string name = testing::TempDir() + "qelcore_system_XXXXXX";
        if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary directory");
        root_ = name;
    }
    ~System() override { std::filesystem::remove_all(root_); }

    const char* root() const { return root_.c_str(); }

    void put(const std::string& path, const std::string& text) {
        const std::filesystem::path file = root_.string() + path;
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file) << text;
    }
    void remove(const std::string& path) { std::filesystem::remove(root_.string() + path); }

    static std::string cpuPath(int cpu) { return "/sys/devices/system/cpu/cpu" + std::to_string(cpu); }

    void putCore(int cpu, int package, int die, int core) {
        put(cpuPath(cpu) + "/topology/physical_package_id", std::to_string(package) + "\n");
        put(cpuPath(cpu) + "/topology/die_id", std::to_string(die) + "\n");
        put(cpuPath(cpu) + "/topology/core_id", std::to_string(core) + "\n");
    }
    void putCaches(int cpu, const std::vector<std::string>& sizes) {
        for (size_t index = 0; index < sizes.size(); ++index)
            put(cpuPath(cpu) + "/cache/index" + std::to_string(index) + "/size", sizes[index]);
    }

    void putUnifiedTree(const std::string& group, const std::string& top = "/") {
        put("/proc/self/cgroup", "0::" + group + "\n");
        put("/proc/self/mountinfo",
            "22 27 0:21 / /proc rw,relatime - proc proc rw\n"
            "31 23 0:28 " +
                top + " /sys/fs/cgroup rw,nosuid shared:4 - cgroup2 cgroup2 rw,nsdelegate\n");
    }
    void putLegacyTree(const std::string& controllers, const std::string& group) {
        put("/proc/self/cgroup", "9:name=systemd:/other\n3:cpuset:/other\n4:" + controllers + ":" + group + "\n");
        put("/proc/self/mountinfo",
            "32 31 0:29 / /sys/fs/cgroup/cpuset rw - cgroup cgroup rw,cpuset\n"
            "33 31 0:30 / /sys/fs/cgroup/cpu rw - cgroup cgroup rw," +
                controllers + "\n");
    }
    int unifiedQuota(const std::string& text) {
        put("/sys/fs/cgroup/cpu.max", text);
        return qel::cpuQuota(root());
    }

    std::filesystem::path root_;
};

qel::CpuSet cpus(std::initializer_list<int> members, int capacity = 1024) {
    qel::CpuSet set(capacity);
    for (const int cpu : members) set.add(cpu);
    return set;
}

class Topology : public System {};
class Quota : public System {};
class Caches : public System {};

TEST(AllowedCpus, AreThoseOfTheProcess) {
    const qel::CpuSet allowed = qel::allowedCpus();
    EXPECT_EQ(omp_get_num_procs(), allowed.count());
    EXPECT_TRUE(allowed.has(sched_getcpu()));
}

TEST(CpuSets, HoldAnyNumberOfProcessors) {
    qel::CpuSet set(5000);
    EXPECT_EQ(0, set.count());
    set.add(0);
    set.add(1024);
    set.add(4999);
    set.add(100000);  // beyond the set: left out
    EXPECT_EQ(3, set.count());
    EXPECT_TRUE(set.has(4999));
    EXPECT_FALSE(set.has(4998));
    EXPECT_FALSE(set.has(100000));

    EXPECT_EQ(0, qel::CpuSet().count());
    EXPECT_EQ(0, qel::CpuSet().capacity());
    EXPECT_FALSE(qel::CpuSet().has(0));
}

TEST_F(Topology, ThreadsOfACoreCountOnce) {
    // Four cores of two threads, then four of one.
    for (int cpu = 0; cpu < 8; ++cpu) putCore(cpu, 0, 0, cpu / 2 * 4);
    for (int cpu = 8; cpu < 12; ++cpu) putCore(cpu, 0, 0, 20 + cpu);
    EXPECT_EQ(8, qel::coresOnLargestDie(root(), cpus({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11})));
    EXPECT_EQ(1, qel::coresOnLargestDie(root(), cpus({0, 1})));
    EXPECT_EQ(3, qel::coresOnLargestDie(root(), cpus({1, 3, 9})));
    EXPECT_EQ(4, qel::coresOnLargestDie(root(), cpus({0, 2, 4, 6})));
}

TEST_F(Topology, LargestPackageCounts) {
    for (int cpu = 0; cpu < 3; ++cpu) putCore(cpu, 1, 0, cpu);
    for (int cpu = 3; cpu < 5; ++cpu) putCore(cpu, 0, 0, cpu - 3);
    EXPECT_EQ(3, qel::coresOnLargestDie(root(), cpus({0, 1, 2, 3, 4})));
    EXPECT_EQ(2, qel::coresOnLargestDie(root(), cpus({0, 3, 4})));
    EXPECT_EQ(1, qel::coresOnLargestDie(root(), cpus({0, 3})));
}

TEST_F(Topology, LargestDieOfAPackageCounts) {
    for (int cpu = 0; cpu < 6; ++cpu) putCore(cpu, 0, cpu < 2 ? 0 : 1, cpu);
    EXPECT_EQ(4, qel::coresOnLargestDie(root(), cpus({0, 1, 2, 3, 4, 5})));
    EXPECT_EQ(2, qel::coresOnLargestDie(root(), cpus({0, 1, 2})));
}

TEST_F(Topology, OldKernelsKnowNoDies) {
    for (int cpu = 0; cpu < 4; ++cpu) {
        putCore(cpu, 0, 0, cpu);
        remove(cpuPath(cpu) + "/topology/die_id");
    }
    EXPECT_EQ(4, qel::coresOnLargestDie(root(), cpus({0, 1, 2, 3})));
}

TEST_F(Topology, ProcessorsBeyondAFixedSetCount) {
    putCore(3, 0, 0, 1);
    putCore(2000, 0, 0, 2);
    EXPECT_EQ(2, qel::coresOnLargestDie(root(), cpus({3, 2000}, 4096)));
}

TEST_F(Topology, UnreadableFilesGiveZero) {
    EXPECT_EQ(0, qel::coresOnLargestDie(root(), cpus({0})));
    EXPECT_EQ(0, qel::coresOnLargestDie(root(), cpus({})));
    for (const char* file : {"core_id", "physical_package_id"}) {
        for (const char* text : {"", "\n", "-1\n", "x1\n", "1x\n", " 1\n"}) {
            putCore(0, 0, 0, 0);
            putCore(1, 0, 0, 1);
            EXPECT_EQ(2, qel::coresOnLargestDie(root(), cpus({0, 1})));
            put(cpuPath(1) + "/topology/" + file, text);
            EXPECT_EQ(0, qel::coresOnLargestDie(root(), cpus({0, 1}))) << file << " '" << text << "'";
        }
        remove(cpuPath(1) + "/topology/" + file);
        EXPECT_EQ(0, qel::coresOnLargestDie(root(), cpus({0, 1}))) << file;
    }
}

TEST_F(Quota, NoGroupsNoLimit) { EXPECT_EQ(INT_MAX, qel::cpuQuota(root())); }

TEST_F(Quota, UnifiedGroupRoundsUp) {
    putUnifiedTree("/");
    EXPECT_EQ(INT_MAX, qel::cpuQuota(root()));
    EXPECT_EQ(INT_MAX, unifiedQuota("max 100000\n"));
    EXPECT_EQ(1, unifiedQuota("1000 100000\n"));
    EXPECT_EQ(1, unifiedQuota("100000 100000\n"));
    EXPECT_EQ(2, unifiedQuota("100001 100000\n"));
    EXPECT_EQ(2, unifiedQuota("150000 100000\n"));
    EXPECT_EQ(64, unifiedQuota("6400000 100000\n"));
}

TEST_F(Quota, OddValuesLimitNothing) {
    putUnifiedTree("/");
    for (const char* text : {"", "\n", "100000", "100000\n", "x y\n", "-1 100000\n", "0 100000\n", "100000 0\n",
                             "100000 x\n", "99999999999999999999999999 1\n", "9223372036854775807 1\n"}) {
        EXPECT_EQ(INT_MAX, unifiedQuota(text)) << text;
    }
}

TEST_F(Quota, SmallestOfTheParentsCounts) {
    putUnifiedTree("/a/b/c");
    put("/sys/fs/cgroup/a/b/c/cpu.max", "max 100000\n");
    EXPECT_EQ(INT_MAX, qel::cpuQuota(root()));
    put("/sys/fs/cgroup/a/b/cpu.max", "300000 100000\n");
    EXPECT_EQ(3, qel::cpuQuota(root()));
    put("/sys/fs/cgroup/a/cpu.max", "500000 100000\n");
    EXPECT_EQ(3, qel::cpuQuota(root()));
    put("/sys/fs/cgroup/a/b/c/cpu.max", "200000 100000\n");
    EXPECT_EQ(2, qel::cpuQuota(root()));
    EXPECT_EQ(1, unifiedQuota("50000 100000\n"));
}

TEST_F(Quota, SiblingsDoNotCount) {
    putUnifiedTree("/a");
    put("/sys/fs/cgroup/ab/cpu.max", "100000 100000\n");
    put("/sys/fs/cgroup/a/b/cpu.max", "100000 100000\n");
    EXPECT_EQ(INT_MAX, qel::cpuQuota(root()));
}

TEST_F(Quota, TreeMayStartBelowTheRootGroup) {
    for (const auto& [group, processors] : {std::pair("/pod/x", 4), std::pair("/pod/x/in", 2), std::pair("/pod/xy", 4),
                                            std::pair("/pod/y/in", 4), std::pair("/", 4)}) {
        putUnifiedTree(group, "/pod/x");
        put("/sys/fs/cgroup/cpu.max", "400000 100000\n");
        put("/sys/fs/cgroup/in/cpu.max", "200000 100000\n");
        EXPECT_EQ(processors, qel::cpuQuota(root())) << group;
    }
}

TEST_F(Quota, LegacyGroup) {
    for (const char* controllers : {"cpu", "cpu,cpuacct", "cpuacct,cpu"}) {
        putLegacyTree(controllers, "/job");
        put("/sys/fs/cgroup/cpu/job/cpu.cfs_period_us", "100000\n");
        put("/sys/fs/cgroup/cpu/job/cpu.cfs_quota_us", "-1\n");
        EXPECT_EQ(INT_MAX, qel::cpuQuota(root()));
        put("/sys/fs/cgroup/cpu/job/cpu.cfs_quota_us", "250000\n");
        EXPECT_EQ(3, qel::cpuQuota(root()));
        remove("/sys/fs/cgroup/cpu/job/cpu.cfs_period_us");
        EXPECT_EQ(INT_MAX, qel::cpuQuota(root()));
    }
    putLegacyTree("cpuacct", "/job");
    put("/sys/fs/cgroup/cpu/job/cpu.cfs_period_us", "100000\n");
    EXPECT_EQ(INT_MAX, qel::cpuQuota(root()));
}

TEST_F(Quota, SmallerOfBothTreesCounts) {
    put("/proc/self/cgroup", "1:cpu:/\n0::/\n");
    put("/proc/self/mountinfo",
        "32 31 0:29 / /sys/fs/cgroup/cpu rw - cgroup cgroup rw,cpu\n"
        "41 31 0:38 / /sys/fs/cgroup/unified rw - cgroup2 cgroup2 rw\n");
    put("/sys/fs/cgroup/cpu/cpu.cfs_period_us", "100000\n");
    put("/sys/fs/cgroup/cpu/cpu.cfs_quota_us", "700000\n");
    EXPECT_EQ(7, qel::cpuQuota(root()));
    put("/sys/fs/cgroup/unified/cpu.max", "500000 100000\n");
    EXPECT_EQ(5, qel::cpuQuota(root()));
}

TEST_F(Quota, DamagedTablesLimitNothing) {
    for (const char* text : {"", "\n", ":", "::", "0:", "garbage\n", "0::\n"}) {
        putUnifiedTree("/");
        put("/proc/self/cgroup", text);
        EXPECT_EQ(INT_MAX, qel::cpuQuota(root())) << text;
    }
    putUnifiedTree("/");
    put("/sys/fs/cgroup/cpu.max", "100000 100000\n");
    for (const char* text :
         {"", " - ", " - cgroup2\n", "- cgroup2 x rw\n", " - cgroup2 x rw\n", "1 2 3 - cgroup2 x rw\n"}) {
        put("/proc/self/mountinfo", text);
        EXPECT_EQ(INT_MAX, qel::cpuQuota(root())) << text;
    }
}

TEST_F(Quota, LongPathsAreCut) {
    putUnifiedTree("/" + std::string(20000, 'x'));
    put("/sys/fs/cgroup/cpu.max", "100000 100000\n");
    EXPECT_EQ(1, qel::cpuQuota(root()));
}

TEST_F(Caches, LargestOfTheUsableProcessorsCounts) {
    EXPECT_EQ(0, qel::largestCacheBytes(root(), cpus({0})));
    putCaches(0, {"48K\n", "32K\n", "2048K\n"});
    putCaches(1, {"48K\n", "32K\n", "2048K\n", "32768K\n"});
    EXPECT_EQ(2048 << 10, qel::largestCacheBytes(root(), cpus({0})));
    EXPECT_EQ(32768 << 10, qel::largestCacheBytes(root(), cpus({0, 1})));
    EXPECT_EQ(0, qel::largestCacheBytes(root(), cpus({2})));
    EXPECT_EQ(0, qel::largestCacheBytes(root(), cpus({})));
}

TEST_F(Caches, UnitsAndBounds) {
    const std::pair<const char*, int> cases[] = {{"512\n", 512},
                                                 {"1K\n", 1 << 10},
                                                 {"3M\n", 3 << 20},
                                                 {"1G\n", 1 << 30},
                                                 {"2G\n", INT_MAX},
                                                 {"2097151K\n", 2147482624},
                                                 {"2097152K\n", INT_MAX},
                                                 {"2147483647\n", INT_MAX},
                                                 {"2147483648\n", INT_MAX},
                                                 {"99999999999999999999999K\n", INT_MAX},
                                                 {"0K\n", 0},
                                                 {"\n", 0},
                                                 {"", 0},
                                                 {"K\n", 0},
                                                 {"-5K\n", 0},
                                                 {"12Q\n", 0},
                                                 {"12KB\n", 0},
                                                 {"12 K\n", 0},
                                                 {"garbage\n", 0}};
    for (const auto& [text, bytes] : cases) {
        putCaches(0, {text});
        EXPECT_EQ(bytes, qel::largestCacheBytes(root(), cpus({0}))) << text;
    }
}

}  // namespace
