#ifndef VALUE_VARIABLE_HASH_H
#define VALUE_VARIABLE_HASH_H

#include "core/resized_array.h"
#include "core/string.h"
#include "value/chain_heads.h"
#include "value/variable_scope.h"

class Dictionary;
class SystemVariableHash;
class TaggedFile;
class TarnApplication;
class Variable;
class VariableList;

// One slot of a table. The order of the fields is part of the binary interface.
struct _VH_Entry {
    int id;        // the name's number in the dictionary
    int version;   // the table's Version() when the variable was stored; some tables keep a slot number here
    Variable* var; // counted; null until it is needed
};

// A table of named variables: the globals of a program, the locals of a function, the system variables. A
// slot keeps its number for good, so that compiled code reaches a variable by slot, without hashing; names
// stand in a Dictionary, which the table doesn't own. Names ignore case. The structure is what the compiled
// image describes; variables are made when they are first asked for.
//
// The table holds one count of each variable. Lengths of -1 mean up to the NUL.
class VariableHash {
  public:
    // An empty table of 1 << bucket_bits buckets, with room for capacity slots. variable_count is 0.
    VariableHash(Dictionary* dictionary, int bucket_bits, int capacity, int variable_count);
    // The same structure and dictionary, without the variables.
    VariableHash(VariableHash& source);
    // The same structure with another dictionary, and with clones of the variables if clone is set.
    VariableHash(TarnApplication* application, Dictionary* dictionary, VariableHash& source, bool clone);
    VariableHash& operator=(const VariableHash&) = delete;

    // Takes the scope prefix off a variable's name: "l.", "global.", "alias.d." and the like, in any case.
    // *name is what stands behind it, or the whole text for SCOPE_UNSCOPED. *alias and its length are set for
    // SCOPE_DATABASE only, and are empty when no alias was given.
    static Variable_Scope Scope(const char* text, int length, const char** name, int* name_length,
                                const char** alias, int* alias_length);

    // The order of the virtual operations is part of the binary interface: add at the end.
    virtual ~VariableHash();
    // Insert makes a slot, also for a name that has one, and answers its number. The table takes over the
    // caller's count of the variable, which goes by its own name.
    virtual int Insert(Variable* variable);
    // For a variable to be made when it is needed: by its name, and by the name's number in the dictionary.
    virtual int Insert(const char* name, int name_length);
    virtual int Insert(int id);
    // Makes slot and variable where they are missing.
    virtual void SetVariable(const char* name, int name_length, const char* value, int value_length);
    // Stores variable itself under its name, in place of what is there. Takes over the caller's count.
    virtual void SetVariable(Variable* variable);
    // Stores a new reference to target, unless the slot holds target itself.
    virtual void SetVariable_Reference(int slot, Variable* target);
    // Sets what a compound name (see LookupVariable_Fancy) means. With append a variable that has a value
    // already becomes an array, and gets the new value behind its last element. Answers 0.
    virtual int SetVariable_Fancy(const char* name, int name_length, const char* value, int value_length,
                                  int append);
    // The slot of a name, or of the name with that id if name is null; -1 without one. entry may be null.
    virtual int Seek(int id, const char* name, int name_length, _VH_Entry** entry);
    // All of the above. With an id of -1 the name goes into the dictionary; with a null name it comes from
    // there by id, and an id that isn't there gets a slot that no search finds. variable may be null.
    virtual int Insert(int id, const char* name, int name_length, Variable* variable);
    // Marks what is stored now: the depth of Push.
    virtual int Version();
    // Sets the variable to NULL. False if there is none.
    virtual bool ClearVariable(const char* name, int name_length);
    // False if the name has no slot. Else *variable is its variable, not counted for the caller: null if it
    // wasn't needed so far and create is 0.
    virtual bool Find(Variable** variable, const char* name, int name_length, int create);
    // Finds by a compound name: a base name, then any number of ":member" and "[index]". False only for a
    // malformed index, with the text in error(); what is missing answers true and null if create is 0, else
    // it is made.
    virtual bool LookupVariable_Fancy(Variable** variable, const char* name, int name_length, int create);
    // The variable of a slot; null for a bad slot, and for one without variable if create is 0.
    virtual Variable* Index(int slot, int create);
    virtual int Size();    // slots there is room for
    virtual int Entries(); // slots in use
    // Adds all variables that exist at the end of list.
    virtual void AllocatedVars(VariableList* list);
    // The persisted form, in a section of its own or at the file's place. False with the text in error() on
    // failure, which leaves the table as it was.
    virtual bool Read(TaggedFile* file, int tag);
    virtual bool Write(TaggedFile* file, int tag);
    virtual bool Read(TaggedFile* file);
    virtual bool Write(TaggedFile* file);
    virtual const String& error();
    virtual bool Error(const String& text); // answers false
    // Scopes, in tables that have them: Push opens one, Pop takes back what was stored since and answers 1,
    // or 0 without an open one.
    virtual void Push();
    virtual int Pop();
    // The table that holds the variables.
    virtual VariableHash* RealIdentity();

    // The table itself if it is a SystemVariableHash, else null.
    virtual SystemVariableHash* AsSystem();

    // Releases all variables. The slots stay.
    void Dump();

    [[nodiscard]] Dictionary* dictionary() const { return dictionary_; }

  protected:
    [[nodiscard]] bool Is_Slot(int slot) const { return slot >= 0 && slot < variable_count; }
    // The name of a slot; null if the dictionary doesn't know it.
    const char* Name_Of(int slot, int* length) const;
    // A new variable with the slot's name, counted for the caller.
    [[nodiscard]] Variable* New_Variable(int slot) const;
    // A new reference under the slot's name, counted for the caller, too.
    [[nodiscard]] Variable* New_Reference(int slot, Variable* target) const;

    // The order of the fields is part of the binary interface.
    ChainHeads buckets; // the head slot of each chain
    int bucket_bits;
    int bucket_size;           // 1 << bucket_bits
    int bucket_entries = 0;    // buckets in use
    Resizable_Array<int> next; // next slot in the chain, -1 at its end
    int capacity = 0;          // of next and entries
    Resizable_Array<_VH_Entry> entries;
    int variable_count; // slots in use
    Dictionary* dictionary_;
    String error_;

  private:
    // Where a name stands in its chain, or would.
    struct Place {
        int bucket;
        int previous; // the slot ahead of it, -1 at the head
        int slot;     // the slot there, -1 at the end
        bool equal;   // has the very name
    };
    [[nodiscard]] Place Find_Place(const char* name, int name_length, bool behind_equals) const;
    [[nodiscard]] int Compare_Name(const char* name, int name_length, int slot) const;
    void Link(const char* name, int name_length, int slot);
    void Replace(int slot, Variable* variable);
    Variable* Base_Variable(const char* name, int name_length, int create);
    void Reserve(int slots);
    void Copy_Structure(const VariableHash& source);
    void Swap_Structure(VariableHash& other);
};

#endif
