#ifndef FRONTEND_ATTRIBUTE_VALUE_ARRAY_H
#define FRONTEND_ATTRIBUTE_VALUE_ARRAY_H

#include "core/string.h"
#include "frontend/scanner/parser_types.h"
#include "frontend/values/attribute_value.h"

#include <memory>

// AttributeValueArray is the numbered row of values of the tag that is being read. It grows as elements are
// asked for; values stay valid until the next growth.
//
// The operations below the plain ones write the code of a construct from its elements; their arguments are
// element numbers, -1 for an element that the construct lacks. They are defined with the tags they serve.
class AttributeValueArray {
  public:
    AttributeValueArray(CompilerParser* parser, int capacity, int grow_by);
    ~AttributeValueArray();
    AttributeValueArray(const AttributeValueArray&) = delete;
    AttributeValueArray& operator=(const AttributeValueArray&) = delete;

    AttributeValue* Element(int index) {
        if (index > last_used)
            last_used = index;
        if (index >= capacity)
            Extend_Array(index);
        return &values[index];
    }
    // Resets the first count elements; none counts as handed out then.
    void Reset(int count);
    // Makes room for the index and grow_by more elements, or for half as many as there are if that is more.
    void Extend_Array(int index);
    // 1 when any of the first count elements is not set, or not there.
    int Check_Complete(int count) const;
    // Pushes the elements from first up to end, which is not included; an end of -1 is behind the highest
    // that was handed out.
    void Output(int end, int first);

    ParserStatus Output_Assignment(int value, int name, int index, int member, AttributeValueArray* array,
                                   int count);
    ParserStatus Output_Reference(int variable, int name, int index, int member, AttributeValueArray* array,
                                  int count);
    ParserStatus Output_For(int depth, int label, int index, int first, int next, int last, int count,
                            int expr);
    ParserStatus Output_Foreach(int depth, int label, int iterator, int array, int first, int next, int last,
                                int index, int count);
    ParserStatus Output_SMTP(int label);

  private:
    // The order of the fields is part of the binary interface.
    String unused;
    CompilerParser* parser; // not owned
    int capacity;
    int last_used = -1;                       // the highest element handed out since the last reset
    std::unique_ptr<AttributeValue[]> values; // capacity elements
    int grow_by;
};

#endif
