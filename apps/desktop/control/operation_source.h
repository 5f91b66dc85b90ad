#pragma once

// The word that names where an operation came from ("UI", "Shortcut",
// "MIDI", "Macro", "Switcher", "Remote"). Input layers set it around one call
// on their own thread; the registry copies it into the request's log line
// and the operationAboutToExecute signal.
namespace tarnix {

// The current thread's source word; "UI" when no input layer set one.
const char *currentOperationSource();

// Sets the thread's source word for the lifetime of the scope and restores
// the previous one when the scope ends, whichever way it ends. The text must
// outlive the scope (string literals do).
class OperationSourceScope
{
public:
    explicit OperationSourceScope(const char *source);
    ~OperationSourceScope();
    OperationSourceScope(const OperationSourceScope &) = delete;
    OperationSourceScope &operator=(const OperationSourceScope &) = delete;

private:
    const char *m_previous;
};

} // namespace tarnix
