#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "recordio/input_file.hpp"
#include "recordio/output_file.hpp"
#include "recordio/system_calls.hpp"
#include "support/scratch_folder.hpp"

namespace mod_p3dgrid::recordio {
namespace {

struct Report {
  std::string path;
  bool writing;
  std::int64_t bytes;
  std::int64_t size;

  friend bool operator==(const Report&, const Report&) = default;
};

class FileProgressReports : public test_support::InScratchFolder {
 protected:
  FileProgressReports() {
    p3dsetprogress([this](const FileProgress& now) {
      reports.push_back({std::string(now.path), now.writing, now.bytes, now.size});
    });
  }
  ~FileProgressReports() override { p3dsetprogress({}); }

  const std::string path = "file";
  std::vector<Report> reports;
};

TEST_F(FileProgressReports, GiveTheOffsetThatReadingHasReached) {
  test_support::write_file("file", std::string(100, 'x'));
  InputFile file(path, 64);
  char bytes[16];
  file.read(bytes, 10);
  file.read(bytes, 10);  // from the buffer
  file.read_ahead(30, bytes, 16);
  file.read_ahead(60, bytes, 16);
  file.skip(50);
  ASSERT_TRUE(file.more());
  EXPECT_EQ(reports, (std::vector<Report>{{"file", false, 64, 100},
                                          {"file", false, 36, 100},
                                          {"file", false, 52, 100},
                                          {"file", false, 100, 100}}));
}

TEST_F(FileProgressReports, GiveTheBytesWritten) {
  {
    OutputFile file("file", OpenStatus::unknown);
    file.begin();
    file.write("0123456789", 10);
    EXPECT_EQ(reports, std::vector<Report>());
    file.flush();
    ASSERT_TRUE(file.allows_random_access(20));
    file.write_ahead(10, "0123456789", 10);
    file.write_ahead(0, "0123456789", 10);
    file.skip(20);
    file.close();
  }
  EXPECT_EQ(reports, (std::vector<Report>{
                         {"file", true, 10, 0}, {"file", true, 20, 0}, {"file", true, 30, 0}}));
}

TEST_F(FileProgressReports, CoverLargeTransfers) {
  const std::string large(64 * 1024, 'x');
  test_support::write_file("file", large);
  InputFile dropped(path, 64);
  dropped.discard(std::ssize(large));
  ASSERT_FALSE(reports.empty());
  EXPECT_EQ(reports.back(), (Report{"file", false, std::ssize(large), std::ssize(large)}));
  reports.clear();
  std::string copy(large.size(), ' ');
  InputFile read(path, 64);
  read.read(copy.data(), std::ssize(copy));
  ASSERT_FALSE(reports.empty());
  EXPECT_EQ(reports.back(), (Report{"file", false, std::ssize(large), std::ssize(large)}));
}

TEST_F(FileProgressReports, MayEndWithinAReport) {
  test_support::write_file("file", std::string(100, 'x'));
  p3dsetprogress([this](const FileProgress&) {
    p3dsetprogress({});
    reports.emplace_back();
  });
  InputFile file(path, 64);
  file.discard(100);
  EXPECT_EQ(reports.size(), 1u);
}

TEST_F(FileProgressReports, EndWithTheObserver) {
  test_support::write_file("file", std::string(100, 'x'));
  p3dsetprogress({});
  InputFile file(path, 64);
  file.discard(100);
  EXPECT_EQ(reports, std::vector<Report>());
}

}  // namespace
}  // namespace mod_p3dgrid::recordio
