// Prints the thread limit and the core count that a new process sees. With the argument "pinned", the first to ask is a
// thread that is bound to a single processor.
#include <omp.h>
#include <pthread.h>
#include <sched.h>

#include <cstdio>
#include <cstring>
#include <thread>

#include "qelcore.h"

namespace {

void askFromPinnedThread() {
    std::thread([] {
        cpu_set_t one;
        CPU_ZERO(&one);
        CPU_SET(sched_getcpu(), &one);
        pthread_setaffinity_np(pthread_self(), sizeof one, &one);
        ownGetNumThreads();
        qelGetNumCoresOnDie();
    }).join();
}

}  // namespace

int main(int argc, char** argv) {
    omp_get_max_threads();  // some runtimes take their own default from the first thread that asks them
    if (argc > 1 && std::strcmp(argv[1], "pinned") == 0) askFromPinnedThread();
    std::printf("%d %d\n", ownGetNumThreads(), qelGetNumCoresOnDie());
}
