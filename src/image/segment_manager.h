#ifndef IMAGE_SEGMENT_MANAGER_H
#define IMAGE_SEGMENT_MANAGER_H

#include "core/string.h"
#include "image/segment.h"

#include <cstddef>
#include <memory>
#include <vector>

class TaggedFile;

// The segments of a compiled image, by number. Owns them. Number 0 is there from the start, without a
// segment.
class SegmentManager {
  public:
    SegmentManager();
    SegmentManager(const SegmentManager& source); // has an empty segment where the source has none
    SegmentManager& operator=(const SegmentManager&) = delete;

    // The order of the virtual operations is part of the binary interface: add at the end.
    virtual ~SegmentManager();
    virtual const String& error();
    virtual bool Error(const String& text); // answers false

    // The segment that a program begins with, made when it is missing.
    Segment* Start();
    // A new segment under the next number.
    Segment* Segment_Add();
    // Null for a number that isn't there or has no segment.
    [[nodiscard]] Segment* Segment_Get(int id) const;
    [[nodiscard]] int Entries() const { return static_cast<int>(segments.size()); }

    // The section "segs". False with the text in error() on failure, which leaves the segments as they were.
    bool Read(TaggedFile* file);
    bool Write(TaggedFile* file);

  private:
    using Segments = std::vector<std::unique_ptr<Segment>>;

    bool Read_Section(TaggedFile* file);
    bool Read_Segments(TaggedFile* file, std::size_t entries, Segments& read);

    Segments segments;
    int start = 0;
    String error_;
};

#endif
