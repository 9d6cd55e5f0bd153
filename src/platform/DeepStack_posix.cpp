#include "platform/DeepStack.h"

#include <pthread.h>
#include <sys/resource.h>

#include <algorithm>
#include <cstddef>

namespace platform {
namespace {

constexpr std::size_t kMegabyte = std::size_t{1} << 20;
constexpr std::size_t kDeepest = 1024 * kMegabyte, kShallowest = 16 * kMegabyte;

struct Task {
    const std::function<int()>& work;
    int answer = 0;
};

void* Do(void* task)
{
    Task& mine = *static_cast<Task*>(task);
    mine.answer = mine.work();
    return nullptr;
}

/// Whoever limits the address space means it for documents: no more than a quarter of it is for the stack.
std::size_t LargestStack()
{
    rlimit limit;
    if (getrlimit(RLIMIT_AS, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) return kDeepest;
    return static_cast<std::size_t>(std::min<rlim_t>(limit.rlim_cur / 4, kDeepest));
}

bool RunsThrough(Task& task, std::size_t stackBytes)
{
    pthread_attr_t attributes;
    pthread_t thread;
    if (pthread_attr_init(&attributes) != 0) return false;
    const bool started = pthread_attr_setstacksize(&attributes, stackBytes) == 0 &&
                         pthread_create(&thread, &attributes, &Do, &task) == 0;
    pthread_attr_destroy(&attributes);
    if (started) pthread_join(thread, nullptr);
    return started;
}

}  // namespace

int OnDeepStack(const std::function<int()>& work)
{
    Task task{work};
    for (std::size_t bytes = LargestStack() / kMegabyte * kMegabyte; bytes >= kShallowest; bytes /= 2)
        if (RunsThrough(task, bytes)) return task.answer;
    return work();
}

}  // namespace platform
