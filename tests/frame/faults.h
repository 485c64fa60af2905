// The sweep over the argument checks of functions that the library keeps to itself, each with an order of its own: each
// fault alone, each pair of faults in order, nothing written.
#ifndef QELCV_TESTS_FRAME_FAULTS_H_
#define QELCV_TESTS_FRAME_FAULTS_H_

#include <gtest/gtest.h>

#include <climits>
#include <functional>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

#include "qelcv/types.h"

namespace qel {

// Memory for good arguments to point at; every call is expected to leave it as it was. Parts hold 1024 bytes.
inline std::vector<unsigned char>& watchedMemory() {
    static std::vector<unsigned char> memory(4096, 0x37);
    return memory;
}
template <class T>
T* watched(int part) {
    return reinterpret_cast<T*>(watchedMemory().data() + 1024 * part);
}

// Starts with good arguments; the faults follow in the order of the function's checks:
//
//     QEL_FAULTS(qelsSet_8u, 3, watched<Qel8u>(0), 7).null<1>().length<2>().run();
template <class... A>
class Faults {
public:
    using Args = std::tuple<A...>;

    Faults(const char* name, qelStatus (*function)(A...), std::type_identity_t<A>... good)
        : name_(name), function_(function), good_(good...) {}

    template <size_t I>
    Faults& fault(qelStatus status, std::tuple_element_t<I, Args> bad) {
        faults_.push_back({status, I, [bad](Args& args) { std::get<I>(args) = bad; }});
        return *this;
    }
    template <size_t I>
    Faults& null() {
        return fault<I>(qelStatusNullPointer, nullptr);
    }
    template <size_t I>
    Faults& length() {
        return fault<I>(qelStatusBadSize, 0).template fault<I>(qelStatusBadSize, INT_MIN);
    }
    template <size_t I>
    Faults& size() {
        for (const QelSize bad : {QelSize{0, 5}, {-3, 5}, {7, 0}, {7, INT_MIN}}) fault<I>(qelStatusBadSize, bad);
        return *this;
    }
    template <size_t I>
    Faults& step() {
        return fault<I>(qelStatusBadStep, 0).template fault<I>(qelStatusBadStep, -8);
    }

    void run() const {
        for (size_t i = 0; i < faults_.size(); ++i) {
            expectStatus(faults_[i].status, {&faults_[i]}, "fault " + std::to_string(i));
            for (size_t j = i + 1; j < faults_.size(); ++j)
                if (faults_[i].argument != faults_[j].argument)
                    expectStatus(faults_[i].status, {&faults_[i], &faults_[j]},
                                 "faults " + std::to_string(i) + " and " + std::to_string(j));
        }
        const std::vector<unsigned char> before = watchedMemory();
        EXPECT_EQ(qelStatusOk, std::apply(function_, good_)) << name_ << ", good arguments";
        watchedMemory() = before;
    }

private:
    struct Fault {
        qelStatus status;
        size_t argument;
        std::function<void(Args&)> apply;
    };

    void expectStatus(qelStatus status, std::initializer_list<const Fault*> faults, const std::string& text) const {
        Args args = good_;
        for (const Fault* fault : faults) fault->apply(args);
        const std::vector<unsigned char> before = watchedMemory();
        EXPECT_EQ(status, std::apply(function_, args)) << name_ << ", " << text;
        EXPECT_EQ(before, watchedMemory()) << name_ << ", " << text << " wrote";
        watchedMemory() = before;
    }

    const char* name_;
    qelStatus (*function_)(A...);
    Args good_;
    std::vector<Fault> faults_;
};

}  // namespace qel

#define QEL_FAULTS(function, ...) Faults(#function, function, __VA_ARGS__)

#endif
