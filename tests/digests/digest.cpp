#include "digests/digest.h"

#include <gtest/gtest.h>
#include <hwy/highway.h>
#include <hwy/targets.h>

#include <algorithm>
#include <cctype>
#include <fstream>
#include <iomanip>
#include <map>
#include <set>
#include <sstream>
#include <stdexcept>

#include "kit/core_double.h"
#include "kit/every_target.h"
#include "kit/options.h"

namespace digest {
namespace {

struct Function {
    Rule rule;
    std::function<int64_t(Call&)> call;
};

std::map<std::string, Function>& functions() {
    static std::map<std::string, Function> all;
    return all;
}

uint64_t mixed(uint64_t hash, uint64_t value) {
    hash = (hash ^ value) * 0x9E3779B97F4A7C15u;
    return hash ^ (hash >> 29);
}

uint64_t mixed(uint64_t hash, const unsigned char* p, size_t bytes) {
    for (; bytes >= 8; bytes -= 8, p += 8) {
        uint64_t word;
        std::memcpy(&word, p, 8);
        hash = mixed(hash, word);
    }
    uint64_t word = bytes;
    for (; bytes > 0; --bytes, ++p) word = word << 8 | *p;
    return mixed(hash, word);
}

// The noise of all images: samples of one byte of which one in four is 0, and floats.
constexpr size_t kNoise = size_t{1} << 16;

struct Noise {
    unsigned char bytes[kNoise];
    float floats[kNoise];
    double doubles[kNoise];

    Noise() {
        uint32_t state = 2463534242u;
        for (size_t i = 0; i < kNoise; ++i) {
            state ^= state << 13;
            state ^= state >> 17;
            state ^= state << 5;
            const bool zero = (state & 3) == 0;
            bytes[i] = zero ? 0 : static_cast<unsigned char>(state >> 11);
            floats[i] = zero ? 0 : static_cast<float>(static_cast<int>(state >> 8) - (1 << 22)) / 65536;
            doubles[i] = floats[i];
        }
    }
};

const Noise& noise() {
    static const Noise instance;
    return instance;
}

}  // namespace

Call::Call(std::string name, QelSize size) : name_(std::move(name)), size_(size), channels_(1) {
    for (size_t at = name_.find("_C"); at != std::string::npos; at = name_.find("_C", at + 1)) {
        if (at + 2 < name_.size() && std::isdigit(static_cast<unsigned char>(name_[at + 2])))
            channels_ = name_[at + 2] - '0';
    }
}

Call::Block& Call::addBlock(size_t rowBytes, size_t rows, bool written) {
    constexpr size_t kGap = 16;
    const size_t step = (rowBytes + kGap + 7) / 8 * 8;
    const size_t offset = 8 * (blocks_.size() + 1);
    blocks_.push_back({std::make_unique<unsigned char[]>(offset + step * rows), offset, rowBytes, step, rows, written});
    return blocks_.back();
}

void Call::fillRow(Block& block, size_t y, int floatBytes) {
    const unsigned char* const from = floatBytes == 0   ? noise().bytes
                                      : floatBytes == 4 ? reinterpret_cast<const unsigned char*>(noise().floats)
                                                        : reinterpret_cast<const unsigned char*>(noise().doubles);
    const size_t size = kNoise * size_t(std::max(floatBytes, 1));
    unsigned char* const row = block.memory.get() + block.offset + block.step * y;
    size_t start = (y * 40503 + blocks_.size() * 12345) % kNoise * size_t(std::max(floatBytes, 1));
    for (size_t done = 0; done < block.rowBytes; start = 0) {
        const size_t part = std::min(block.rowBytes - done, size - start);
        std::memcpy(row + done, from + start, part);
        done += part;
    }
}

Qel8u* Call::scratch(int bytes) {
    Block& block = addBlock(size_t(bytes), 1, false);
    std::memset(block.memory.get(), 0x5C, block.offset + block.step);
    return block.memory.get() + block.offset;
}

uint64_t Call::digest(int64_t returned) const {
    uint64_t hash = mixed(0, uint64_t(returned));
    for (const Block& block : blocks_) {
        for (size_t y = 0; block.written && y < block.rows; ++y)
            hash = mixed(hash, block.memory.get() + block.offset + block.step * y, block.rowBytes);
    }
    return hash;
}

void Registration::add(const char** names, Rule rule, std::function<int64_t(Call&)> call) {
    const std::string list = *names;
    const size_t comma = list.find(',');
    const std::string name = list.substr(0, comma);
    *names += comma == std::string::npos ? list.size() : list.find_first_not_of(" \n", comma + 1);
    if (!name.starts_with("qel")) throw std::logic_error(name + " is no function: a comma outside of parentheses?");
    if (!functions().emplace(name, Function{rule, std::move(call)}).second)
        throw std::logic_error(name + " is listed twice");
}

namespace {

constexpr QelSize kSmall[] = {{1, 1}, {7, 5}, {131, 6}};
// Beyond the limits from which on functions use threads, for 3 and for 33 of them.
constexpr QelSize kLarge = {603, 437};
constexpr QelSize kLargest = {1039, 1043};

uint64_t oneCall(const std::string& name, const Function& function, QelSize size, int threads) {
    kit::core().reset();
    kit::core().threads = threads;
    Call call(name, size);
    const int64_t returned = function.call(call);
    EXPECT_GE(returned, 0) << name << " at " << size.width << "x" << size.height << " with " << threads << " threads";
    return call.digest(returned);
}

void use(int64_t target) {
    hwy::SetSupportedTargetsForTest(target);
    hwy::GetChosenTarget().DeInit();
}

// What a size gives, under all instruction sets and numbers of threads: each instruction set with one thread, the best
// one with all numbers of them, the others with one each.
uint64_t sameEverywhere(const std::string& name, const Function& function, QelSize size,
                        const std::vector<int>& threads) {
    const std::vector<int64_t> targets = kit::targets();
    const int64_t best = targets.front();
    use(best);
    const uint64_t want = oneCall(name, function, size, 1);
    const auto expect = [&](int64_t target, int count) {
        use(target);
        EXPECT_EQ(want, oneCall(name, function, size, count))
            << name << " at " << size.width << "x" << size.height << ": " << hwy::TargetName(target) << " with "
            << count << " threads gives another result than " << hwy::TargetName(best) << " with 1";
    };
    for (size_t i = 1; i < targets.size(); ++i) {
        expect(targets[i], 1);
        if (!threads.empty()) expect(targets[i], threads[i % threads.size()]);
    }
    for (const int count : threads) expect(best, count);
    use(0);
    return want;
}

uint64_t digestOfQuery(const std::string& name, const Function& function) {
    uint64_t hash = 0;
    for (const QelSize size : {kSmall[0], kSmall[1], kSmall[2], kLarge, kLargest})
        for (const int threads : {1, 2, 3, 33}) hash = mixed(hash, oneCall(name, function, size, threads));
    return hash;
}

uint64_t digestOf(const std::string& name, const Function& function) {
    if (function.rule.sizeQuery) return digestOfQuery(name, function);
    uint64_t hash = 0;
    for (const QelSize size : kSmall) hash = mixed(hash, sameEverywhere(name, function, size, {}));
    if (function.rule.smallOnly) return hash;
    const bool one = function.rule.oneThread;
    hash = mixed(hash, sameEverywhere(name, function, kLarge, one ? std::vector<int>() : std::vector<int>{2, 3}));
    // The best instruction set only, for the time it takes.
    const uint64_t largest = oneCall(name, function, kLargest, 1);
    if (!one) {
        EXPECT_EQ(largest, oneCall(name, function, kLargest, 33)) << name << " gives another result with 33 threads";
    }
    return mixed(hash, largest);
}

std::string hex(uint64_t hash) {
    std::ostringstream text;
    text << std::hex << std::setfill('0') << std::setw(16) << hash;
    return text.str();
}

constexpr const char* kArchitecture = sizeof(void*) == 4 ? ":i386" : ":x86_64";

std::string keyOf(const std::string& name, const Function& function) {
    return name + (function.rule.sizeQuery ? kArchitecture : "");
}

// The lines of the file: a name, with the architecture where its digest depends on it, and the digest.
std::map<std::string, std::string> fromFile() {
    std::map<std::string, std::string> digests;
    std::ifstream file(DIGESTS_FILE);
    for (std::string name, digest; file >> name >> digest;) {
        const auto [at, isNew] = digests.emplace(name, digest);
        if (!isNew && at->second != digest) at->second = "of two lines";
    }
    return digests;
}

const std::map<std::string, std::string>& expected() {
    static const std::map<std::string, std::string> digests = fromFile();
    return digests;
}

std::map<std::string, std::string>& found() {
    static std::map<std::string, std::string> digests;
    return digests;
}

class DigestTest : public testing::Test {
public:
    explicit DigestTest(std::string name) : name_(std::move(name)) {}

    void TestBody() override {
        const Function& function = functions().at(name_);
        const std::string digest = hex(digestOf(name_, function));
        kit::core().reset();
        found()[keyOf(name_, function)] = digest;
        if (kit::options().write) return;
        const auto line = expected().find(keyOf(name_, function));
        ASSERT_NE(line, expected().end()) << "no digest in " DIGESTS_FILE "; write it by digests_test --write";
        EXPECT_EQ(line->second, digest) << "the result of " << name_ << " has changed";
    }

private:
    std::string name_;
};

// No line of the file without a function.
TEST(Digests, haveFunctions) {
    std::set<std::string> known;
    for (const auto& [name, function] : functions()) {
        known.insert(function.rule.sizeQuery ? name + ":i386" : name);
        known.insert(function.rule.sizeQuery ? name + ":x86_64" : name);
    }
    if (kit::options().write) return;
    for (const auto& [name, digest] : expected())
        EXPECT_TRUE(known.contains(name)) << name << " is not listed by any family";
}

// Lines of the other architecture and of tests that did not run stay.
class Writer : public testing::Environment {
public:
    void TearDown() override {
        if (!kit::options().write) return;
        std::map<std::string, std::string> lines;
        for (const auto& [key, digest] : expected()) {
            if (functions().contains(key.substr(0, key.find(':')))) lines[key] = digest;
        }
        for (const auto& [key, digest] : found()) lines[key] = digest;
        std::ofstream file(DIGESTS_FILE);
        for (const auto& [key, digest] : lines) file << key << ' ' << digest << '\n';
    }
};

const bool registered = [] {
    kit::options().prepare = [] {
        for (const auto& [name, function] : functions()) {
            testing::RegisterTest("Digest", name.c_str(), nullptr, nullptr, __FILE__, __LINE__,
                                  [name = name]() -> testing::Test* { return new DigestTest(name); });
        }
        testing::AddGlobalTestEnvironment(new Writer());
    };
    return true;
}();

}  // namespace
}  // namespace digest
