#pragma once

#include "detect/evidence.hpp"
#include "recordio/connection.hpp"
#include "recordio/read_error.hpp"

namespace p3dgrid {

/// Reads header records from the beginning of a file, and keeps their sizes.
class HeaderReader {
 public:
  HeaderReader(Evidence& evidence, const Coding& coding)
      : file_(is_text(coding) ? evidence.text() : evidence.file()), coding_(coding) {
    file_.go_to(0);
  }

  void operator()(const recordio::ReadList& list) {
    sizes.add(list, real_kind(coding_));
    recordio::read_record(file_, coding_.encoding, coding_.byte_order, list,
                          recordio::RestOfRecord::skipped, lines_);
  }

  /// Runs a walk over header records; false if the file does not hold them.
  template <class Walk>
  static bool succeeds(Walk walk) {
    try {
      return walk();
    } catch (const recordio::ReadError& error) {
      // An error of the system says nothing about the file.
      if (error.status > recordio::status_error) throw;
      return false;
    }
  }

  /// Saves the position of a reader and restores it.
  class Place {
   public:
    explicit Place(HeaderReader& reader)
        : reader_(reader), offset_(reader.file_.offset()), lines_(reader.lines_) {}
    void go_back() const {
      reader_.file_.go_to(offset_);
      reader_.lines_ = lines_;
    }

   private:
    HeaderReader& reader_;
    std::int64_t offset_;
    std::int64_t lines_;
  };

  HeaderSizes sizes;

 private:
  recordio::InputFile& file_;
  const Coding& coding_;
  std::int64_t lines_ = 0;
};

}  // namespace p3dgrid
