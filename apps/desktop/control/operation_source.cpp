#include "control/operation_source.h"

namespace tarnix {

namespace {
thread_local const char *threadOperationSource = "UI";
} // namespace

const char *currentOperationSource()
{
    return threadOperationSource;
}

OperationSourceScope::OperationSourceScope(const char *source)
    : m_previous(threadOperationSource)
{
    threadOperationSource = source ? source : "UI";
}

OperationSourceScope::~OperationSourceScope()
{
    threadOperationSource = m_previous;
}

} // namespace tarnix
