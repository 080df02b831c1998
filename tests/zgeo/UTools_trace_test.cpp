#include <gtest/gtest.h>

#include <atomic>
#include <barrier>
#include <chrono>
#include <cstdlib>
#include <new>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "platform/zgeo/UTools.h"
#include "tests/support/TraceCapture.h"

namespace {

/// Allocations of this thread, counted to show that tracing costs nothing when nobody listens.
thread_local long allocations = 0;

}  // namespace

// Not inlined: GCC would pair the malloc in one with the free in another and warn.
[[gnu::noinline]] void* operator new(std::size_t size) {
  ++allocations;
  if (void* const block = std::malloc(size == 0 ? 1 : size)) return block;
  throw std::bad_alloc();
}

[[gnu::noinline]] void operator delete(void* block) noexcept { std::free(block); }
[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept { std::free(block); }

namespace zgeo {
namespace {

using Lines = std::vector<std::wstring>;
using korvo::test::TraceCapture;

class Trace : public korvo::test::TracedTest {};

// --- Lines

TEST_F(Trace, WritesAWholeLine) {
  UTools::_trace(L"zkin | %s %d", L"axis", 4);
  EXPECT_TRUE(trace.claim(L"zkin | axis 4"));
}

TEST_F(Trace, AppendsPartsUntilTheLineIsEnded) {
  UTools::_traceTS(L"%dx_[ ", 2);
  UTools::_traceTS(L"%s%+-10.3lf", L"X", 1.5);
  EXPECT_TRUE(trace.lines().empty());
  UTools::_traceTS(L"]");
  UTools::_traceTF();
  EXPECT_TRUE(trace.claim(L"2x_[ X+1.500    ]"));
}

TEST_F(Trace, WholeLineEndsTheOpenOne) {
  UTools::_traceTS(L"solver: ");
  UTools::_trace(L"failed %d", 4);
  UTools::_trace(L"next");
  EXPECT_EQ(trace.lines(), (Lines{L"solver: failed 4", L"next"}));
  trace.claimAll();
}

TEST_F(Trace, EndingWithoutAnOpenLineWritesAnEmptyOne) {
  UTools::_traceTF();
  EXPECT_TRUE(trace.claim(L""));
}

TEST_F(Trace, EmptyPartOpensALine) {
  UTools::_traceTS(L"");
  EXPECT_TRUE(trace.lines().empty());
  UTools::_traceTF();
  UTools::_traceTF();
  EXPECT_EQ(trace.lines(), (Lines{L"", L""}));
  trace.claimAll();
}

TEST_F(Trace, LineFeedInATextStaysInIt) {
  UTools::_trace(L"one\ntwo");
  EXPECT_TRUE(trace.claim(L"one\ntwo"));
}

TEST_F(Trace, PartsCarryNoTimeStamp) {
  UTools::_traceTS(L"a");
  UTools::_traceTS(L"b");
  UTools::_traceTF();
  EXPECT_TRUE(trace.claim(L"ab"));
}

TEST_F(Trace, HoldsLinesOfAnyLength) {
  const std::wstring text(3000, L'x');
  for (int i = 0; i < 10; ++i) UTools::_traceTS(L"%s", text.c_str());
  UTools::_traceTF();
  EXPECT_TRUE(trace.claim(std::wstring(30000, L'x')));
}

// --- Sinks

class TimedSink : public UTraceSink {
 public:
  void line(const std::wstring&, std::chrono::system_clock::time_point t) override { time = t; }
  std::chrono::system_clock::time_point time;
};

TEST(TraceSink, GetsTheTimeAtWhichTheLineEnded) {
  TimedSink sink;
  UTraceSink* const former = UTools::_setTraceSink(&sink);
  UTools::_traceTS(L"opened early ");
  const auto before = std::chrono::system_clock::now();
  UTools::_traceTF();
  const auto after = std::chrono::system_clock::now();
  UTools::_setTraceSink(former);
  EXPECT_GE(sink.time, before);
  EXPECT_LE(sink.time, after);
}

TEST(TraceSink, NoneIsSetAtTheStart) {
  UTraceSink* const former = UTools::_setTraceSink(nullptr);
  EXPECT_EQ(former, nullptr);
  EXPECT_FALSE(UTools::_isTracing());
}

TEST(TraceSink, SettingOneGivesTheFormer) {
  TimedSink first;
  TimedSink second;
  UTraceSink* const former = UTools::_setTraceSink(&first);
  EXPECT_TRUE(UTools::_isTracing());
  EXPECT_EQ(UTools::_setTraceSink(&second), &first);
  EXPECT_EQ(UTools::_setTraceSink(former), &second);
}

TEST(TraceSink, LineGoesToTheOneSetAtItsEnd) {
  TraceCapture first;
  UTools::_traceTS(L"begun, ");
  {
    TraceCapture second;
    UTools::_trace(L"ended");
    EXPECT_TRUE(second.claim(L"begun, ended"));
  }
  EXPECT_TRUE(first.lines().empty());
}

TEST(TraceWithoutSink, AllocatesAndFormatsNothing) {
  const std::wstring text(1000, L'x');
  const long before = allocations;
  UTools::_trace(L"%s %d", text.c_str(), 1);
  UTools::_traceTS(L"%s %d", text.c_str(), 2);
  UTools::_traceTF();
  EXPECT_EQ(allocations, before);
  UTools::_formatted(L"%s", text.c_str());
  EXPECT_GT(allocations, before) << "the count does not see this library";
}

TEST(TraceWithoutSink, PartsOpenNoLine) {
  UTools::_traceTS(L"nobody hears this");
  TraceCapture trace;
  UTools::_trace(L"heard");
  EXPECT_TRUE(trace.claim(L"heard"));
}

TEST(TraceWithoutSink, EndingDropsALineThatWasOpenBefore) {
  {
    TraceCapture trace;
    UTools::_traceTS(L"left open");
  }
  UTools::_traceTF();
  TraceCapture trace;
  UTools::_trace(L"fresh");
  EXPECT_TRUE(trace.claim(L"fresh"));
}

TEST(TraceWithoutSink, WholeLineDropsALineThatWasOpenBefore) {
  {
    TraceCapture trace;
    UTools::_traceTS(L"left open");
  }
  UTools::_trace(L"dropped too");
  TraceCapture trace;
  UTools::_trace(L"fresh");
  EXPECT_TRUE(trace.claim(L"fresh"));
}

// --- The ready sink

struct StreamRow {
  const char* name;
  std::wstring text;
  std::string bytes;
};

void PrintTo(const StreamRow& row, std::ostream* out) { *out << row.name; }
std::string rowName(const testing::TestParamInfo<StreamRow>& info) { return info.param.name; }

class StreamSink : public testing::TestWithParam<StreamRow> {};

TEST_P(StreamSink, WritesUtf8AndALineFeed) {
  std::ostringstream stream;
  UStreamTraceSink sink(stream);
  sink.line(GetParam().text, {});
  EXPECT_EQ(stream.str(), GetParam().bytes);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, StreamSink,
    testing::Values(
        StreamRow{"Empty", L"", "\n"}, StreamRow{"Ascii", L"axis 4", "axis 4\n"},
        StreamRow{"LastOfOneByte", L"\u007F", "\x7F\n"},
        StreamRow{"FirstOfTwoBytes", L"\u0080", "\xC2\x80\n"},
        StreamRow{"TwoBytes", L"pi\u00E8ce",
                  "pi\xC3\xA8"
                  "ce\n"},
        StreamRow{"LastOfTwoBytes", L"\u07FF", "\xDF\xBF\n"},
        StreamRow{"FirstOfThreeBytes", L"\u0800", "\xE0\xA0\x80\n"},
        StreamRow{"ThreeBytes", L"\u20AC", "\xE2\x82\xAC\n"},
        StreamRow{"LastOfThreeBytes", L"\uFFFF", "\xEF\xBF\xBF\n"},
        StreamRow{"FourBytes", L"\U0001F600", "\xF0\x9F\x98\x80\n"},
        StreamRow{"LastCharacter", L"\U0010FFFF", "\xF4\x8F\xBF\xBF\n"},
        StreamRow{"LoneHighSurrogate", std::wstring(1, wchar_t(0xD800)), "\xEF\xBF\xBD\n"},
        StreamRow{"LoneLowSurrogate", std::wstring(1, wchar_t(0xDFFF)), "\xEF\xBF\xBD\n"},
        StreamRow{"NulStays", std::wstring(L"a\0b", 3), std::string("a\0b\n", 4)}),
    rowName);

TEST(StreamSinkValues, BeyondTheLastCharacterBecomesTheReplacement) {
  if constexpr (sizeof(wchar_t) > 2) {
    std::ostringstream stream;
    UStreamTraceSink sink(stream);
    sink.line({wchar_t(0x110000), wchar_t(-1), L'x'}, {});
    EXPECT_EQ(stream.str(), "\xEF\xBF\xBD\xEF\xBF\xBDx\n");
  }
}

TEST(StreamSinkValues, TakesTheTrace) {
  std::ostringstream stream;
  UStreamTraceSink sink(stream);
  UTraceSink* const former = UTools::_setTraceSink(&sink);
  UTools::_trace(L"one %s", L"\u00E9");
  UTools::_trace(L"two");
  UTools::_setTraceSink(former);
  EXPECT_EQ(stream.str(), "one \xC3\xA9\ntwo\n");
}

// --- Threads

class TraceThreads : public korvo::test::TracedTest {};

TEST_F(TraceThreads, EachHasItsOwnOpenLine) {
  UTools::_traceTS(L"main ");
  std::thread([] { UTools::_trace(L"other"); }).join();
  UTools::_trace(L"goes on");
  EXPECT_EQ(trace.lines(), (Lines{L"other", L"main goes on"}));
  trace.claimAll();
}

TEST_F(TraceThreads, PartsOfEightNeverMix) {
  constexpr int kThreads = 8;
  constexpr int kLines = 200;
  std::barrier together(kThreads);
  const auto work = [&together](int id) {
    together.arrive_and_wait();
    for (int i = 0; i < kLines; ++i) {
      for (int part = 0; part < 3; ++part) UTools::_traceTS(L"<%d:%d>", id, i);
      UTools::_traceTF();
    }
  };
  std::vector<std::thread> threads;
  for (int id = 0; id < kThreads; ++id) threads.emplace_back(work, id);
  for (std::thread& thread : threads) thread.join();
  ASSERT_EQ(trace.lines().size(), std::size_t{kThreads * kLines});
  std::vector<int> next(kThreads, 0);
  for (const std::wstring& line : trace.lines()) {
    const auto id = static_cast<std::size_t>(line.at(1) - L'0');
    const std::wstring part =
        L"<" + std::to_wstring(id) + L":" + std::to_wstring(next.at(id)) + L">";
    EXPECT_EQ(line, part + part + part);
    ++next[id];
  }
  trace.claimAll();
}

TEST_F(TraceThreads, LineLeftOpenEndsWithItsThread) {
  for (int i = 0; i < 2; ++i) {
    std::thread([] { UTools::_traceTS(L"never ended"); }).join();
  }
  UTools::_trace(L"main");
  EXPECT_TRUE(trace.claim(L"main"));
}

/// Traces when its thread's objects are destroyed; made before the thread traced, it goes last.
struct TracesAtThreadEnd {
  ~TracesAtThreadEnd() {
    UTools::_traceTS(L"late ");
    UTools::_trace(L"words");
  }
};

TEST_F(TraceThreads, MayTraceToTheVeryEnd) {
  std::thread([] {
    thread_local const TracesAtThreadEnd last;
    UTools::_traceTS(L"early and left open");
  }).join();
  EXPECT_TRUE(trace.claim(L"late words"));
}

TEST(TraceSinkThreads, SinkMayChangeWhileOthersTrace) {
  class CountingSink : public UTraceSink {
   public:
    void line(const std::wstring&, std::chrono::system_clock::time_point) override { ++count; }
    std::atomic<int> count{0};
  };
  constexpr int kLines = 2000;
  CountingSink first;
  CountingSink second;
  UTraceSink* const former = UTools::_setTraceSink(&first);
  std::thread tracer([] {
    for (int i = 0; i < kLines; ++i) UTools::_trace(L"line");
  });
  for (int i = 0; i < 100; ++i) UTools::_setTraceSink(i % 2 == 0 ? &second : &first);
  tracer.join();
  UTools::_setTraceSink(former);
  EXPECT_EQ(first.count + second.count, kLines);
}

}  // namespace
}  // namespace zgeo
