#include "small_stack.h"

#include <exception>
#include <system_error>

#include <pthread.h>

namespace Zelm::Testing {

namespace {

struct Task {
    std::function<void()> const& call;
    std::exception_ptr failure;
};

void* runOnThisStack(void* argument)
{
    auto& task = *static_cast<Task*>(argument);
    try {
        task.call();
    } catch (...) {
        task.failure = std::current_exception();
    }
    return nullptr;
}

void check(int error)
{
    if (error != 0)
        throw std::system_error(error, std::generic_category());
}

}  // namespace

void onASmallStack(std::function<void()> const& call)
{
    Task task{call, nullptr};
    pthread_attr_t attributes;
    check(pthread_attr_init(&attributes));
    check(pthread_attr_setstacksize(&attributes, smallStackBytes));
    pthread_t thread;
    check(pthread_create(&thread, &attributes, runOnThisStack, &task));
    check(pthread_join(thread, nullptr));
    pthread_attr_destroy(&attributes);
    if (task.failure)
        std::rethrow_exception(task.failure);
}

}  // namespace Zelm::Testing
