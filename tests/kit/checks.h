// The sweep over a function's argument checks: each fault alone, each ordered pair of faults, nothing written.
#ifndef QELCV_TESTS_KIT_CHECKS_H_
#define QELCV_TESTS_KIT_CHECKS_H_

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "kit/core_double.h"
#include "kit/guarded_memory.h"
#include "qelcv/types.h"

namespace kit {

// Reads what there is to check off the function's signature. A pointer ahead of an int is an image with its step,
// another pointer an output of its own, a QelSize the region; the rest are values, 1 unless said otherwise. The order
// of the checks is the library's common one - pointers, sizes, steps against the row, step alignment - followed by the
// faults that the family adds:
//
//     Checks("qeliMean_StdDev_16u_C3CR", qeliMean_StdDev_16u_C3CR)
//         .channels<0>(3).optional<4>().optional<5>()
//         .fault<3>("coi 0", qelStatusBadChannel, 0).fault<3>("coi 4", qelStatusBadChannel, 4)
//         .run();
template <class... A>
class Checks {
public:
    using Function = qelStatus (*)(A...);
    using Args = std::tuple<A...>;
    template <size_t I>
    using Arg = std::tuple_element_t<I, Args>;

    Checks(std::string name, Function function) : name_(std::move(name)), function_(function), args_(sizeof...(A)) {
        classify(std::index_sequence_for<A...>());
    }

    // Samples per pixel of image I; 1 unless said otherwise.
    template <size_t I>
    Checks& channels(int n) {
        args_[I].channels = n;
        return *this;
    }

    // Image I has so many columns and rows more than the region.
    template <size_t I>
    Checks& larger(int columns, int rows) {
        args_[I].more = {columns, rows};
        return *this;
    }

    // The good value of argument I.
    template <size_t I>
    Checks& value(Arg<I> good) {
        std::get<I>(good_) = good;
        return *this;
    }

    // Null is a good value of pointer I.
    template <size_t I>
    Checks& optional() {
        args_[I].required = false;
        return *this;
    }

    // Pointer I is an image although no step follows it, or none although an int follows.
    template <size_t I>
    Checks& notAnImage() {
        args_[I].image = false;
        args_[I + 1].step = false;
        return *this;
    }

    // Argument I is a size, but not the region's: it has a good value and faults of its own.
    template <size_t I>
    Checks& notARegion() {
        args_[I].region = false;
        return *this;
    }

    // Step I is not tested against the sample size.
    template <size_t I>
    Checks& anyAlignment() {
        args_[I].sample = 1;
        return *this;
    }

    // Each step is tested against the row and at once against the sample, before the next step.
    Checks& stepByStep() {
        for (const auto& arg : indicesOfSteps()) stepOrder_.insert(stepOrder_.end(), {{arg, false}, {arg, true}});
        return *this;
    }

    // Steps are tested in the order given: the index of a step, and whether its alignment or its size is meant.
    struct StepTest {
        size_t index;
        bool alignment;
    };
    Checks& stepOrder(std::vector<StepTest> order) {
        stepOrder_ = std::move(order);
        return *this;
    }

    // As fault, but tested ahead of the steps.
    template <size_t I>
    Checks& faultAheadOfSteps(std::string text, qelStatus status, Arg<I> bad) {
        earlyFaults_.push_back({std::move(text), status, I, [bad](Args& args) { std::get<I>(args) = bad; }});
        return *this;
    }

    // A fault of the family: argument I is `bad`. Tested after the steps, in the order of these calls.
    template <size_t I>
    Checks& fault(std::string text, qelStatus status, Arg<I> bad) {
        familyFaults_.push_back({std::move(text), status, I, [bad](Args& args) { std::get<I>(args) = bad; }});
        return *this;
    }

    void run() {
        SCOPED_TRACE(name_);
        core().reset();
        prepare(std::index_sequence_for<A...>());
        std::vector<Fault> faults;
        listFaults(faults, std::index_sequence_for<A...>());

        ASSERT_FALSE(faults.empty());
        for (size_t i = 0; i < faults.size(); ++i) {
            expectStatus(faults[i].text, faults[i].status, {&faults[i]});
            // The later fault is put in first, so that the earlier one has the last word on an argument they share.
            for (size_t j = i + 1; j < faults.size(); ++j)
                if (faults[i].argument != faults[j].argument)
                    expectStatus(faults[i].text + " and " + faults[j].text, faults[i].status, {&faults[j], &faults[i]});
        }
        EXPECT_EQ(qelStatusOk, std::apply(function_, good_)) << "good arguments";
    }

private:
    struct Fault {
        std::string text;
        qelStatus status;
        size_t argument;
        std::function<void(Args&)> apply;
    };
    struct ArgInfo {
        bool image = false;     // a pointer with a step behind it
        bool step = false;      // the step of the argument ahead
        bool required = false;  // a pointer that must not be null
        bool region = false;    // a size that must not be empty
        int sample = 0;         // bytes
        int channels = 1;
        QelSize more = {0, 0};  // than the region
        std::unique_ptr<GuardedMemory> memory;
        std::vector<unsigned char> before;
    };

    static constexpr QelSize kRoi = {7, 5};

    template <size_t... I>
    void classify(std::index_sequence<I...>) {
        (classifyOne<I>(), ...);
    }

    template <size_t I>
    void classifyOne() {
        using T = Arg<I>;
        if constexpr (std::is_pointer_v<T>) {
            args_[I].required = true;
            args_[I].sample = bytesOf<std::remove_pointer_t<T>>();
            if constexpr (I + 1 < sizeof...(A)) {
                if constexpr (std::is_same_v<Arg<I + 1>, int>) {
                    args_[I].image = true;
                    args_[I + 1].step = true;
                    args_[I + 1].sample = args_[I].sample;
                }
            }
        } else if constexpr (std::is_same_v<T, QelSize>) {
            std::get<I>(good_) = kRoi;
            args_[I].region = true;
        } else if constexpr (std::is_arithmetic_v<T>) {
            std::get<I>(good_) = T(1);
        }
    }

    // 1 for what only the library knows, as states, and for what is no sample.
    template <class Sample>
    static constexpr int bytesOf() {
        if constexpr (!std::is_void_v<Sample> && requires { sizeof(Sample); }) {
            return sizeof(Sample);
        } else {
            return 1;
        }
    }

    int rowBytes(size_t image) const {
        return (kRoi.width + args_[image].more.width) * args_[image].channels * args_[image].sample;
    }

    template <size_t... I>
    void prepare(std::index_sequence<I...>) {
        (prepareOne<I>(), ...);
    }

    template <size_t I>
    void prepareOne() {
        if constexpr (std::is_pointer_v<Arg<I>>) {
            if (std::get<I>(good_) != nullptr) return;
            constexpr int kOutputBytes = 64;
            const int bytes = args_[I].image ? rowBytes(I) * (kRoi.height + args_[I].more.height) : kOutputBytes;
            args_[I].memory = std::make_unique<GuardedMemory>(size_t(bytes));
            std::memset(args_[I].memory->data(), 0x37, size_t(bytes));
            args_[I].before.assign(size_t(bytes), 0x37);
            std::get<I>(good_) = reinterpret_cast<Arg<I>>(args_[I].memory->data());
        } else if constexpr (std::is_same_v<Arg<I>, int>) {
            if (args_[I].step) std::get<I>(good_) = rowBytes(I - 1);
        }
    }

    std::vector<size_t> indicesOfSteps() const {
        std::vector<size_t> indices;
        for (size_t i = 0; i < args_.size(); ++i)
            if (args_[i].step) indices.push_back(i);
        return indices;
    }

    template <size_t... I>
    void listFaults(std::vector<Fault>& faults, std::index_sequence<I...>) {
        (listNull<I>(faults), ...);
        (listSizes<I>(faults), ...);
        faults.insert(faults.end(), earlyFaults_.begin(), earlyFaults_.end());
        if (stepOrder_.empty()) {
            for (const bool alignment : {false, true})
                for (const size_t step : indicesOfSteps()) stepOrder_.push_back({step, alignment});
        }
        for (const StepTest& test : stepOrder_) (listStep<I>(faults, test), ...);
        faults.insert(faults.end(), familyFaults_.begin(), familyFaults_.end());
    }

    template <size_t I>
    void listNull(std::vector<Fault>& faults) {
        if constexpr (std::is_pointer_v<Arg<I>>) {
            if (!args_[I].required) return;
            faults.push_back({"null pointer " + std::to_string(I), qelStatusNullPointer, I,
                              [](Args& args) { std::get<I>(args) = nullptr; }});
        }
    }

    template <size_t I>
    void listSizes(std::vector<Fault>& faults) {
        if constexpr (std::is_same_v<Arg<I>, QelSize>) {
            if (!args_[I].region) return;
            for (const QelSize bad : {QelSize{0, 5}, {-3, 5}, {7, 0}, {7, -1}}) {
                faults.push_back({"size " + std::to_string(bad.width) + "x" + std::to_string(bad.height),
                                  qelStatusBadSize, I, [bad](Args& args) { std::get<I>(args) = bad; }});
            }
        }
    }

    template <size_t I>
    void listStep(std::vector<Fault>& faults, StepTest test) {
        if constexpr (std::is_same_v<Arg<I>, int>) {
            if (test.index != I) return;
            const int row = rowBytes(I - 1);
            const int sample = args_[I].sample;
            const auto add = [&](int bad, qelStatus status) {
                faults.push_back({"step " + std::to_string(I) + " of " + std::to_string(bad), status, I,
                                  [bad](Args& args) { std::get<I>(args) = bad; }});
            };
            if (!test.alignment) {
                for (const int bad : {row - sample, row - 1, 0, -row}) add(bad, qelStatusBadStep);
            } else if (sample > 1) {
                add(row + 1, qelStatusStepNotElementMultiple);
                add(row + sample / 2, qelStatusStepNotElementMultiple);
            }
        }
    }

    void expectStatus(const std::string& text, qelStatus status, std::initializer_list<const Fault*> faults) {
        Args args = good_;
        for (const Fault* fault : faults) fault->apply(args);
        EXPECT_EQ(status, std::apply(function_, args)) << text;
        for (const ArgInfo& arg : args_) {
            if (arg.memory == nullptr) continue;
            EXPECT_EQ(0, std::memcmp(arg.before.data(), arg.memory->data(), arg.before.size())) << text << " wrote";
            EXPECT_TRUE(arg.memory->surroundingsIntact()) << text << " wrote out of bounds";
        }
    }

    std::string name_;
    Function function_;
    Args good_{};
    std::vector<ArgInfo> args_;
    std::vector<StepTest> stepOrder_;
    std::vector<Fault> earlyFaults_;
    std::vector<Fault> familyFaults_;
};

}  // namespace kit

// Checks of `function` under its own name.
#define CHECKS_OF(function) kit::Checks(#function, function)

#endif
