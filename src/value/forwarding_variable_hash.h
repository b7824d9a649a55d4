#ifndef VALUE_FORWARDING_VARIABLE_HASH_H
#define VALUE_FORWARDING_VARIABLE_HASH_H

#include "value/variable_hash.h"

// What the tables have in common that know names by numbers of their own while the variables are in another
// table, the target. A slot's version is the slot in the target that the name resolved to, or -1 as long as
// it wasn't looked up. A table that is its own target behaves as a plain VariableHash.
//
// Size, error, Read, Write and Dump are the table's own; Insert and Seek are the target's, so slots of its
// own come from copying or from Read.
//
// Mind that Index and SetVariable_Reference take a slot of this table, as compiled code has it, while Seek
// and Insert answer slots of the target: what Seek found is for the Index of RealIdentity().
class ForwardingVariableHash : public VariableHash {
  public:
    int Insert(Variable* variable) override;
    int Insert(const char* name, int name_length) override;
    int Insert(int id) override;
    void SetVariable(const char* name, int name_length, const char* value, int value_length) override;
    void SetVariable(Variable* variable) override;
    void SetVariable_Reference(int slot, Variable* variable) override;
    int SetVariable_Fancy(const char* name, int name_length, const char* value, int value_length,
                          int append) override;
    int Seek(int id, const char* name, int name_length, _VH_Entry** entry) override;
    int Insert(int id, const char* name, int name_length, Variable* variable) override;
    int Version() override;
    bool ClearVariable(const char* name, int name_length) override;
    // Of a name that has a slot here but none in the target, without create: true and null.
    bool Find(Variable** variable, const char* name, int name_length, int create) override;
    bool LookupVariable_Fancy(Variable** variable, const char* name, int name_length, int create) override;
    Variable* Index(int slot, int create) override;
    int Entries() override;
    void AllocatedVars(VariableList* list) override;
    using VariableHash::Read;
    bool Read(TaggedFile* file) override;
    void Push() override;
    int Pop() override;
    VariableHash* RealIdentity() override;

  protected:
    ForwardingVariableHash(Dictionary* dictionary, VariableHash* target, int bucket_bits, int capacity);
    // The structure of source. The table is its own target until another one is put in place.
    ForwardingVariableHash(TarnApplication* application, Dictionary* dictionary, VariableHash& source,
                           bool clone);

    VariableHash* target; // owned by ClonedVariableHash, unless it is this table; by no other

  private:
    [[nodiscard]] bool Is_Plain() const { return target == this; }
    // The target's slot for a slot of this table; -1 if there is none and create is 0.
    int Target_Slot(int slot, int create);
};

#endif
