#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

#include "MOD_P3DReader.hpp"
#include "grid/grid_case.hpp"
#include "restart/restart_case.hpp"
#include "support/unit.hpp"

namespace mod_p3dgrid {
namespace {

using namespace test_support;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr integer unset = -77;

/// Runs what must end the run; returns how it ended.
RunEnded run_end_of(const std::function<void()>& action) {
  try {
    action();
  } catch (const RunEnded& end) {
    return end;
  }
  ADD_FAILURE() << "the run goes on";
  return RunEnded({-1, ""});
}

class ReadRestartHeader : public InScratchFolder {
 protected:
  integer nblocks = unset;
  allocatable<integer, 1> idim;
  allocatable<integer, 1> jdim;
  allocatable<integer, 1> kdim;

  template <class Content>
  void read(const Content& bytes, int iformat, bool dblprec, int layout, bool multiblock = true) {
    write_file("restart", bytes);
    readrestartheader("restart", iformat, dblprec, nblocks, layout, multiblock, idim, jdim, kdim);
  }

  /// The integer that the next read of the open file finds.
  static integer next_integer(int iformat) {
    integer value = unset;
    EXPECT_TRUE(test_support::Unit(201, iformat).read({recordio::scalar(value)}));
    return value;
  }
};

Bytes talven(int equation_set, int nblocks, int time_integration) {
  return Bytes()
      .record(Bytes().i4s({3, equation_set}))
      .record(Bytes().i4s({nblocks, 6, time_integration, 8, 99}).r8(.125));
}

TEST_F(ReadRestartHeader, OfLayout0WithoutParameters) {
  talre = 5;
  isgsmodel = 4;
  read(talven(0, 2, 2)
           .record(Bytes().i4s({1, 2, 3}))
           .record(Bytes().i4s({4, 5, 6}))
           .record(Bytes().i4(42)),
       0, true, 0);
  EXPECT_EQ(nblocks, 2);
  EXPECT_EQ(fileversion, 3);
  EXPECT_EQ(eqid, 0);
  EXPECT_EQ(talnvar, 6);
  EXPECT_EQ(itimeint, 2);
  EXPECT_EQ(ibeta, 8);
  EXPECT_EQ(nstep, 99);
  EXPECT_EQ(dtau, .125);
  EXPECT_EQ(talre, 5);
  EXPECT_EQ(isgsmodel, 4);
  EXPECT_THAT(vector_of(jdim), ElementsAre(2, 5));
  EXPECT_THAT(calls, ElementsAre("checkallocationerror(0)"));
  EXPECT_EQ(next_integer(0), 42);
  EXPECT_THAT(messages, IsEmpty());
}

void expect_flow_parameters() {
  EXPECT_EQ(isgsmodel, 7);
  EXPECT_THAT((std::array{talre, talxm1, talalfa, talbeta, talgam, tals1, talpr, talprt}),
              ElementsAre(1, 2, 3, 4, 5, 6, 7, 8));
}

TEST_F(ReadRestartHeader, OfLayout0WithParameters) {
  read(talven(1, 1, 0)
           .record(Bytes().i4(7).r8s({1, 2, 3, 4, 5, 6, 7, 8}))
           .record(Bytes().i4s({1, 2, 3}))
           .record(Bytes().i4(42)),
       0, true, 0);
  expect_flow_parameters();
  EXPECT_EQ(next_integer(0), 42);
}

TEST_F(ReadRestartHeader, OfLayout0AsTextReadsParametersWhateverThePrecision) {
  for (const bool dblprec : {false, true}) {
    talre = isgsmodel = 0;
    read(std::string("3 1\n1 6 0 8 99 .1D0\n7 1 2 3 4 5 6 7 8\n1 2 3\n42\n"), 1, dblprec, 0);
    expect_flow_parameters();
    EXPECT_EQ(dtau, .1);
    EXPECT_EQ(next_integer(1), 42);
  }
}

TEST_F(ReadRestartHeader, OfLayout0InSinglePrecisionRefusesEquationSet1) {
  dtau = 9;
  const Bytes single = Bytes().i4s({3, 1}).i4s({1, 6, 0, 8, 99}).r4(.5F);
  const RunEnded end = run_end_of([&] { read(single, 2, false, 0); });
  EXPECT_EQ(end.status, 0);
  EXPECT_STREQ(end.what(), "");
  EXPECT_THAT(messages, ElementsAre(" Single precision TALVEN reads not working!"));
  EXPECT_EQ(dtau, 9);
  EXPECT_EQ(nstep, 99);
  EXPECT_TRUE(is_open("restart"));
  EXPECT_THAT(calls, IsEmpty());
}

TEST_F(ReadRestartHeader, OfLayout0InSinglePrecisionTakesOtherEquationSets) {
  read(Bytes().i4s({3, 2}).i4s({1, 6, 0, 8, 99}).r4(.1F).i4s({1, 2, 3}), 2, false, 0);
  EXPECT_EQ(dtau, static_cast<double>(.1F));
  EXPECT_THAT(vector_of(kdim), ElementsAre(3));
}

TEST_F(ReadRestartHeader, OfLayout1) {
  itimeint = 3;
  read(Bytes().i4(5).r4(.1F).i4(2).i4s({1, 2, 3, 4, 5, 6, 42}), 2, false, 1);
  EXPECT_EQ(nstep, 5);
  EXPECT_EQ(dtau, static_cast<double>(.1F));
  EXPECT_EQ(itimeint, 0);
  EXPECT_THAT(vector_of(idim), ElementsAre(1, 4));
  EXPECT_EQ(next_integer(2), 42);
}

TEST_F(ReadRestartHeader, OfLayout100StopsBehindItsFirstRecord) {
  read(Bytes().record(Bytes().i4(5).r8(.1).i4(2)).record(Bytes().i4(42)), 0, true, 100);
  EXPECT_EQ(dtau, .1);
  EXPECT_EQ(nblocks, 2);
  EXPECT_EQ(next_integer(0), 42);
  EXPECT_THAT(vector_of(idim), ElementsAre(0, 0));
}

TEST_F(ReadRestartHeader, OfLayout101AllocatesTwiceAndDropsTheExtents) {
  nblocks = 7;
  read(Bytes().record(Bytes().i4s({2, 3, 4, 5}).r8(.1)).record(Bytes().i4(42)), 0, true, 101);
  EXPECT_EQ(nblocks, 1);
  EXPECT_EQ(nstep, 5);
  EXPECT_EQ(dtau, .1);
  EXPECT_THAT(vector_of(idim), ElementsAre(0));
  EXPECT_THAT(calls, ElementsAre("checkallocationerror(0)", "checkallocationerror(0)"));
  EXPECT_EQ(next_integer(0), 42);
}

TEST_F(ReadRestartHeader, OfLayoutsWithoutHeaderReadsNothing) {
  for (const int layout : {102, 5, -1}) {
    itimeint = 2;
    read(Bytes().i4s({42, 43}), 2, true, layout);
    EXPECT_EQ(nblocks, 1);
    EXPECT_EQ(itimeint, 0);
    EXPECT_EQ(idim.size(), 1);
    EXPECT_EQ(next_integer(2), 42);
  }
}

TEST_F(ReadRestartHeader, OfLayout2) {
  read(Bytes().i4s({4, 2, 4, 24, 1, 2, 3, 4, 5, 6, 24, 4, 42, 4}), 0, false, 2);
  EXPECT_EQ(nblocks, 2);
  EXPECT_THAT(vector_of(kdim), ElementsAre(3, 6));
  EXPECT_EQ(next_integer(0), 42);
  read(Bytes().i4s({12, 1, 2, 3, 12, 4, 42, 4}), 0, false, 2, false);
  EXPECT_EQ(nblocks, 1);
  EXPECT_THAT(vector_of(kdim), ElementsAre(3));
  EXPECT_EQ(next_integer(0), 42);
}

TEST_F(ReadRestartHeader, OfLayout3AllocatesVariableCountsOnce) {
  read(std::string("2\n1 2 3 7  4 5 6 8\n42\n"), 1, false, 3);
  EXPECT_THAT(vector_of(jdim), ElementsAre(2, 5));
  EXPECT_THAT(vector_of(nfvar), ElementsAre(7, 8));
  EXPECT_THAT(calls, ElementsAre("checkallocationerror(0)", "checkallocationerror(0)"));
  EXPECT_EQ(next_integer(1), 42);
  calls.clear();
  read(std::string("1\n1 2 3 9\n"), 1, false, 3);
  EXPECT_THAT(vector_of(nfvar), ElementsAre(9, 8));
  EXPECT_THAT(calls, ElementsAre("checkallocationerror(0)"));
}

TEST_F(ReadRestartHeader, MoreBlocksThanVariableCountsHaveRoomForAreAFailedRead) {
  read(Bytes().i4(1).i4s({1, 1, 1, 5}), 2, false, 3);
  calls.clear();
  idim.deallocate();
  read(Bytes().i4(2).i4s({1, 1, 1, 6, 1, 1, 1, 7}), 2, false, 3);
  EXPECT_THAT(calls, ElementsAre("checkallocationerror(0)", "dispfilereaderror()"));
  EXPECT_THAT(vector_of(nfvar), ElementsAre(5));
  EXPECT_THAT(p3dlastfailure().describe(), HasSubstr("2 blocks, expected at most 1"));
  EXPECT_TRUE(is_open("restart"));
  EXPECT_FALSE(idim.allocated());
}

TEST_F(ReadRestartHeader, ExtentsLeftOutOfTextAreZero) {
  read(std::string("1\n4,,6\n"), 1, false, 2);
  EXPECT_THAT(vector_of(jdim), ElementsAre(0));
}

TEST_F(ReadRestartHeader, WithoutBlocksReadsTheOneRecordOfLayouts2And3) {
  for (const int layout : {2, 3}) {
    for (const int count : {0, -2}) {
      nfvar.deallocate();
      read(Bytes().record(Bytes().i4(count)).record(Bytes()).record(Bytes().i4(42)), 0, false,
           layout);
      EXPECT_EQ(nblocks, count);
      EXPECT_EQ(idim.size(), 0);
      EXPECT_EQ(next_integer(0), 42);
    }
  }
  read(Bytes().record(Bytes().i4(5).r4(.1F).i4(-1)).record(Bytes().i4(42)), 0, false, 1);
  EXPECT_EQ(nblocks, -1);
  EXPECT_EQ(next_integer(0), 42);
}

TEST_F(ReadRestartHeader, TinyTextCannotAnnounceManyBlocks) {
  // Extents, or the body, have a line of each block's own, which no repeat count stands for.
  for (const int layout : {1, 100}) {
    calls.clear();
    read(std::string("1 .5 50000000\n999999999*1"), 1, false, layout);
    EXPECT_THAT(calls, ElementsAre("dispfilereaderror()"));
  }
  for (const int layout : {2, 3}) {
    calls.clear();
    read(std::string("50000000\n999999999*1"), 1, false, layout);
    EXPECT_THAT(calls, ElementsAre("dispfilereaderror()"));
  }
}

TEST_F(ReadRestartHeader, ATimeStepLeftOutOfTextStaysAsItIs) {
  dtau = 9;
  read(std::string("3 0\n1 6 0 8 99 ,/\n1 2 3\n"), 1, true, 0);
  EXPECT_EQ(dtau, 9);
}

TEST_F(ReadRestartHeader, UnknownFormatsSayNothingOfVariableCountsTooFew) {
  ASSERT_EQ(nfvar.allocate(0), allocation_done);
  readrestartheader("missing", 7, true, nblocks, 3, true, idim, jdim, kdim);
  EXPECT_EQ(count_calls("dispfilereaderror"), 0);
  EXPECT_EQ(idim.size(), 1);
}

TEST_F(ReadRestartHeader, UnknownFormatsOpenAndReadNothing) {
  for (const int layout : {0, 1, 2, 3, 100, 101, 102}) {
    calls.clear();
    nfvar.deallocate();
    itimeint = 2;
    readrestartheader("missing", 3, true, nblocks, layout, true, idim, jdim, kdim);
    EXPECT_EQ(nblocks, 1);
    EXPECT_EQ(itimeint, 0);
    EXPECT_EQ(idim.size(), 1);
    EXPECT_EQ(count_calls("checkallocationerror"), layout == 3 ? 2 : 1) << layout;
    EXPECT_EQ(count_calls("dispfilereaderror"), 0);
  }
  EXPECT_THAT(messages, IsEmpty());
}

TEST_F(ReadRestartHeader, ThatEndsInsideARecordIsAFailedRead) {
  dtau = 9;
  read(Bytes().record(Bytes().i4s({3, 0})).i4(28).i4s({2, 6, 1}), 0, true, 0);
  EXPECT_THAT(calls, ElementsAre("dispfilereaderror()"));
  EXPECT_TRUE(is_open("restart"));
  EXPECT_EQ(nblocks, 2);
  EXPECT_EQ(itimeint, 1);
  EXPECT_EQ(dtau, 9);
  EXPECT_FALSE(idim.allocated());
}

TEST_F(ReadRestartHeader, OfAMillionBlocksNeedsNothingBehindItWhereItHoldsNoExtents) {
  for (const int iformat : {0, 1, 2}) {
    for (const integer count : {100'000, 1'048'576}) {
      calls.clear();
      const Bytes record = Bytes().i4(5).r4(.1F).i4(count);
      read(iformat == 1 ? "5 .1 " + std::to_string(count) + "\n"
                        : (iformat == 0 ? Bytes().record(record) : record).str(),
           iformat, false, 100);
      EXPECT_THAT(calls, ElementsAre("checkallocationerror(0)"));
      EXPECT_EQ(nblocks, count);
      ASSERT_EQ(idim.size(), count);
      EXPECT_EQ(idim(count), 0);
    }
  }
  // More are too many to be taken on trust.
  calls.clear();
  read(Bytes().i4(5).r4(.1F).i4(1'048'577), 2, false, 100);
  EXPECT_THAT(calls, ElementsAre("dispfilereaderror()"));
  EXPECT_THAT(p3dlastfailure().describe(), HasSubstr("the extents of 1048577 blocks"));
}

TEST_F(ReadRestartHeader, ThatEndsInsideItsExtentsHasHadItsArraysAllocated) {
  struct Cut {
    int layout;
    Bytes bytes;
  };
  constexpr integer count = 100'000;
  for (const auto& [layout, bytes] : {Cut{1, Bytes().i4(5).r4(.1F).i4(count).i4s({1, 2, 3, 4})},
                                      Cut{2, Bytes().i4(count).i4s({1, 2, 3, 4})}}) {
    calls.clear();
    read(bytes, 2, false, layout);
    EXPECT_THAT(calls, ElementsAre("checkallocationerror(0)", "dispfilereaderror()"));
    EXPECT_EQ(nblocks, count);
    EXPECT_EQ(p3dlastfailure().status, -1);
  }
}

TEST_F(ReadRestartHeader, WithAnAbsurdBlockCountIsAFailedReadBeforeMemoryIsTaken) {
  for (const int layout : {1, 100}) {
    calls.clear();
    read(Bytes().i4(5).r4(.1F).i4(2147483647), 2, false, layout);
    EXPECT_THAT(calls, ElementsAre("dispfilereaderror()"));
  }
}

TEST_F(ReadRestartHeader, HandsOverExtentsThatNoArrayOfPointsCouldHave) {
  for (const integer layout : {1, 2, 3}) {
    nfvar.deallocate();
    const Bytes lead = layout == 1 ? Bytes().i4(7).r4(.5F).i4(3) : Bytes().i4(3);
    const auto block = [&](integer i, integer j, integer k) {
      return layout == 3 ? Bytes().i4s({i, j, k, 5}) : Bytes().i4s({i, j, k});
    };
    calls.clear();
    read(Bytes(lead)
             .append(block(-5, 2, 2))
             .append(block(70000, 70000, 1))
             .append(block(671088640, 536870912, 536870912)),
         2, false, layout);
    EXPECT_EQ(count_calls("dispfilereaderror"), 0);
    EXPECT_THAT(vector_of(idim), ElementsAre(-5, 70000, 671088640));
    EXPECT_THAT(vector_of(kdim), ElementsAre(2, 1, 536870912));
  }
}

TEST_F(ReadRestartHeader, ReplacesTheArraysItIsGiven) {
  ASSERT_EQ(idim.allocate(9), allocation_done);
  read(Bytes().i4(1).i4s({1, 2, 3}), 2, false, 2);
  EXPECT_THAT(vector_of(idim), ElementsAre(1));
}

TEST_F(ReadRestartHeader, WithoutArraysLeavesTheFileAtTheSamePlace) {
  write_file("restart", Bytes().i4(1).i4s({1, 2, 3, 42}));
  readrestartheader("restart", 2, false, nblocks, 2, true);
  EXPECT_EQ(next_integer(2), 42);
}

TEST_F(ReadRestartHeader, OfAMissingFileIsAnErrorOfTheRun) {
  EXPECT_EQ(run_end_of([&] { readrestartheader("missing", 0, true, nblocks, 2, true); }).status, 2);
}

class WriteRestartHeader : public InScratchFolder {
 protected:
  std::vector<integer> idim{1, 4};
  std::vector<integer> jdim{2, 5};
  std::vector<integer> kdim{3, 6};

  WriteRestartHeader() {
    nstep = 77;
    dtau = .1;
  }

  /// The file after the unit that the operation leaves open has been closed.
  std::string written(int iformat, bool dblprec, int layout, bool multiblock = true) {
    writerestartheader("restart", iformat, dblprec, 2, idim, jdim, kdim, layout, multiblock);
    EXPECT_TRUE(is_open("restart"));
    p3dcloseunit(301);
    return read_file("restart");
  }
};

TEST_F(WriteRestartHeader, OfLayout2) {
  EXPECT_EQ(written(0, false, 2), Bytes().i4s({4, 2, 4, 24, 1, 2, 3, 4, 5, 6, 24}).str());
  EXPECT_EQ(written(0, false, 2, false), Bytes().i4s({24, 1, 2, 3, 4, 5, 6, 24}).str());
  EXPECT_EQ(written(2, true, 2), Bytes().i4s({2, 1, 2, 3, 4, 5, 6}).str());
  EXPECT_EQ(written(1, true, 2), " 2\n 1 2 3 4 5 6\n");
}

TEST_F(WriteRestartHeader, OfLayouts1And100) {
  const Bytes single = Bytes().i4(77).r4(.1F).i4(2);
  const Bytes full = Bytes().i4(77).r8(.1).i4(2);
  EXPECT_EQ(written(2, false, 100), single.str());
  EXPECT_EQ(written(0, true, 100), Bytes().record(full).str());
  EXPECT_EQ(written(1, false, 100), " 77 0.1 2\n");
  EXPECT_EQ(
      written(0, false, 1),
      Bytes().record(single).record(Bytes().i4s({1, 2, 3})).record(Bytes().i4s({4, 5, 6})).str());
  EXPECT_EQ(written(1, true, 1), " 77 0.1 2\n 1 2 3\n 4 5 6\n");
}

TEST_F(WriteRestartHeader, OfLayout101HoldsTheFirstBlockOnly) {
  EXPECT_EQ(written(0, true, 101), Bytes().record(Bytes().i4s({1, 2, 3, 77}).r8(.1)).str());
  EXPECT_EQ(written(2, false, 101), Bytes().i4s({1, 2, 3, 77}).r4(.1F).str());
  EXPECT_EQ(written(1, false, 101), " 1 2 3 77 0.1\n");
}

TEST_F(WriteRestartHeader, OfLayouts102AndUnknownIsEmpty) {
  for (const int layout : {102, 5}) EXPECT_EQ(written(0, true, layout), "");
}

TEST_F(WriteRestartHeader, OfLayout3TakesTheVariableCounts) {
  ASSERT_EQ(nfvar.allocate(2), allocation_done);
  nfvar(1) = 7;
  nfvar(2) = 8;
  EXPECT_EQ(written(2, false, 3), Bytes().i4s({2, 1, 2, 3, 7, 4, 5, 6, 8}).str());
  EXPECT_THAT(calls, IsEmpty());
}

TEST_F(WriteRestartHeader, OfLayout3AllocatesMissingVariableCounts) {
  EXPECT_EQ(written(1, false, 3), " 2\n 1 2 3 0 4 5 6 0\n");
  EXPECT_THAT(calls, ElementsAre("checkallocationerror(0)"));
  EXPECT_EQ(nfvar.size(), 2);
}

TEST_F(WriteRestartHeader, OfLayout0HaltsTheRun) {
  for (const int iformat : {0, 1, 2, 3}) {
    for (const bool dblprec : {false, true}) {
      messages.clear();
      const RunEnded end = run_end_of([&] { static_cast<void>(written(iformat, dblprec, 0)); });
      EXPECT_EQ(end.status, 0);
      EXPECT_THAT(messages, ElementsAre(" TALVEN Writer not implimented!"));
      EXPECT_EQ(is_open("restart"), iformat != 3);
      p3dcloseunit(301);
    }
  }
  EXPECT_EQ(read_file("restart"), "");
}

TEST_F(WriteRestartHeader, OfLayout0KeepsTheFileThatWasThere) {
  for (const int iformat : {0, 1, 2}) {
    write_file("restart", std::string("as it was"));
    run_end_of([&] { static_cast<void>(written(iformat, true, 0)); });
    EXPECT_TRUE(is_open("restart"));
    EXPECT_EQ(read_file("restart"), "as it was");
    p3dcloseunit(301);
    EXPECT_EQ(read_file("restart"), "as it was");
  }
}

TEST_F(WriteRestartHeader, WithoutARecordKeepsTheFileThatWasThere) {
  for (const int iformat : {0, 1, 2}) {
    write_file("restart", std::string("as it was"));
    EXPECT_EQ(written(iformat, false, 102), "as it was");
  }
}

TEST_F(WriteRestartHeader, ThatEndsBeforeItsFirstRecordKeepsTheFileThatWasThere) {
  write_file("restart", std::string("as it was"));
  on_allocation = [](int) { throw std::runtime_error("host"); };
  EXPECT_THROW(static_cast<void>(written(0, false, 3, false)), std::runtime_error);
  p3dcloseunit(301);
  EXPECT_EQ(read_file("restart"), "as it was");
}

using WriteRestartHeaderDeathTest = WriteRestartHeader;

TEST_F(WriteRestartHeaderDeathTest, AHaltByDefaultKeepsTheFileThatWasThere) {
  write_file("restart", std::string("as it was"));
  EXPECT_EXIT(
      {
        p3dsetrunend({});
        static_cast<void>(written(0, true, 0));
      },
      ::testing::ExitedWithCode(0), "^$");
  EXPECT_EQ(read_file("restart"), "as it was");
}

TEST_F(WriteRestartHeader, NeedsTheExtentsThatItWritesOnly) {
  idim = jdim = kdim = {4};
  EXPECT_EQ(written(2, false, 101), Bytes().i4s({4, 4, 4, 77}).r4(.1F).str());
  idim = jdim = kdim = {};
  const std::string steps = Bytes().i4(77).r4(.1F).i4(2).str();
  EXPECT_EQ(written(2, false, 100), steps);
  EXPECT_EQ(written(2, false, 102), steps);  // writes nothing
  EXPECT_THROW(static_cast<void>(written(2, false, 101)), RunEnded);
}

TEST_F(WriteRestartHeader, WithFewerExtentsThanBlocksIsAnErrorOfTheRun) {
  write_file("restart", std::string("as it was"));
  kdim.pop_back();
  const RunEnded end = run_end_of([&] { static_cast<void>(written(0, false, 2)); });
  EXPECT_EQ(end.status, 2);
  EXPECT_THAT(end.what(), HasSubstr("extents of 1 blocks, 2 are to be written"));
  EXPECT_EQ(read_file("restart"), "as it was");
}

TEST_F(WriteRestartHeader, WithFewerVariableCountsThanBlocksIsAnErrorOfTheRun) {
  ASSERT_EQ(nfvar.allocate(1), allocation_done);
  const RunEnded end = run_end_of([&] { static_cast<void>(written(0, false, 3)); });
  EXPECT_THAT(end.what(), HasSubstr("nfvar holds 1 blocks, 2 are to be written"));
}

TEST_F(WriteRestartHeader, UnknownFormatsWriteNothing) {
  writerestartheader("restart", 9, true, 2, idim, jdim, kdim, 3, true);
  EXPECT_FALSE(exists("restart"));
  EXPECT_THAT(calls, IsEmpty());
}

TEST_F(WriteRestartHeader, IsReadBackIntoTheSameValues) {
  for (const int layout : {1, 2, 3, 100, 101}) {
    for (const int iformat : {0, 1, 2}) {
      for (const bool dblprec : {false, true}) {
        nfvar.deallocate();
        ASSERT_EQ(nfvar.allocate(2), allocation_done);
        std::ranges::fill(nfvar.span(), 6);
        nstep = 77;
        dtau = .1;
        static_cast<void>(written(iformat, dblprec, layout));
        nfvar.deallocate();
        nstep = 0;
        dtau = 0;
        integer nblocks = unset;
        allocatable<integer, 1> i;
        allocatable<integer, 1> j;
        allocatable<integer, 1> k;
        readrestartheader("restart", iformat, dblprec, nblocks, layout, true, i, j, k);
        EXPECT_EQ(nblocks, layout == 101 ? 1 : 2);
        if (layout == 2 || layout == 3) {
          EXPECT_EQ(nstep, 0);
        } else {
          EXPECT_EQ(nstep, 77);
          EXPECT_EQ(dtau, iformat == 1 || dblprec ? .1 : static_cast<double>(.1F));
        }
        if (layout < 100) {
          EXPECT_THAT(vector_of(j), ElementsAre(2, 5));
        }
        if (layout == 3) {
          EXPECT_THAT(vector_of(nfvar), ElementsAre(6, 6));
        }
      }
    }
  }
}

}  // namespace
}  // namespace mod_p3dgrid
