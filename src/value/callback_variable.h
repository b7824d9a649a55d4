#ifndef VALUE_CALLBACK_VARIABLE_H
#define VALUE_CALLBACK_VARIABLE_H

#include "value/aggregate.h"
#include "value/variable.h"

class CallbackStructVariable;
class CallbackVariable;

// What an engine or an extension supplies to answer for the members of a CallbackStructVariable. Made on the
// heap by its supplier, and then owned by the variable that it is attached to, which discards it when it
// goes.
//
// Callback and variable know each other, and both have a Detach: whichever is called first takes back both
// links by calling the other one, and the callback is the caller's then. Suppliers call it to take a callback
// back. Besides, the variable's is called when its callback is attached to another variable, is replaced or
// deleted, and by its own destructor, which discards the callback right after it.
class CallbackVariableCallback {
  public:
    CallbackVariableCallback();
    CallbackVariableCallback(const CallbackVariableCallback&) = delete;
    CallbackVariableCallback& operator=(const CallbackVariableCallback&) = delete;

    // The order of the virtual operations is part of the binary interface: add at the end.
    virtual ~CallbackVariableCallback();
    // Called by the variable that takes the callback. A variable that had it before is detached.
    virtual void Attach(CallbackVariable* variable);
    // Nothing without a variable.
    virtual void Detach();
    // Deletes the callback. Called by the owner that lets it go: a variable, or who has detached it.
    virtual void Discard();
    // Whether there is a member of that name: it is stored in variable, or its value put in return_value().
    virtual bool Lookup(CallbackStructVariable* variable, AggregateIndex index) = 0;
    // Not counted for the caller. A member that is created on demand is this very variable.
    virtual Variable* return_value();

  protected:
    // The order of the fields is part of the binary interface.
    CallbackVariable* attached = nullptr; // null without one
    VariableHold result{new Variable};
};

// A variable with a callback, which it owns.
class CallbackVariable : public Variable {
  public:
    explicit CallbackVariable(CallbackVariableCallback* callback);
    CallbackVariable(const CallbackVariable&) = delete;

    // The order of the virtual operations is part of the binary interface: add at the end.
    ~CallbackVariable() override;
    // Nothing: there is a callback to keep.
    void Make_Reference(Variable* target) override;
    // Puts another callback in place and discards the old one.
    void Make_CallbackStruct(CallbackVariableCallback* callback) override;
    // Nothing without a callback.
    virtual void Detach();

  protected:
    // For a variable that becomes this one, where it stands.
    CallbackVariable(Variable&& variable, CallbackVariableCallback* callback);
};

// A structure whose members the callback supplies when they are first asked for.
class CallbackStructVariable : public CallbackVariable {
  public:
    explicit CallbackStructVariable(CallbackVariableCallback* callback);

    Variable* Element(const AggregateIndex& index, int create) override;

  private:
    friend class Variable;

    CallbackStructVariable(Variable&& variable, CallbackVariableCallback* callback);

    Variable* Member(const AggregateIndex& index);
};

#endif
