#include <algorithm>
#include <csignal>
#include <gtest/gtest.h>

#if !defined(_WIN32)
#include <sys/resource.h>
#endif

#include <vrxmath/platform/file_system.h>
#include <vrxmath/support/diagnostic_log.h>
#include <vrxmath/support/settings.h>

#include "tests/support/test_environment.h"

namespace vrx {
namespace {

constexpr DiagChannel kChannels[] = {DiagChannel::kColorSensor, DiagChannel::kGeneral};

class DiagnosticLog : public testing::Test {
 protected:
  // The log in the test's directory, with one mode on both channels.
  void SetMode(int32_t mode) {
    for (const DiagChannel channel : kChannels) SetSettingInt(kDiagSection, DiagModeValue(channel), mode);
    SetSettingString(kDiagSection, kDiagPathValue, CString::FromUtf8(directory_ / ""));
    support_internal::ForgetDiagModes();
  }
  int32_t StoredMode(DiagChannel channel) { return GetSettingInt(kDiagSection, DiagModeValue(channel), -99); }
  std::string LogText() { return directory_.Read(file_); }
  // All that was shown since the last call, as one text.
  std::string Shown() {
    std::string all;
    for (const std::string& text : platform_.messages.Take()) all += text;
    return all;
  }

  test::TemporaryFolder directory_;
  std::string file_ = directory_ / "VrxDebug.txt";
  FakePlatform platform_;
};

TEST_F(DiagnosticLog, AModeNeverSetIsStoredAsOff) {
  for (const DiagChannel channel : kChannels) {
    EXPECT_EQ(DiagGetMode(channel), 0);
    EXPECT_EQ(StoredMode(channel), 0);
    EXPECT_FALSE(DiagIsEnabled(channel));
    DiagWrite("lost", channel);
  }
  EXPECT_EQ(Shown(), "");
}

TEST_F(DiagnosticLog, ModesDecideWhatBecomesOfAMessage) {
  struct Row {
    int32_t mode;
    bool enabled;
    bool shown;
    bool written;
  };
  const Row rows[] = {{0, false, false, false}, {1, true, true, false},   {2, true, false, true},
                      {3, false, false, false}, {4, true, true, false},   {5, true, false, true},
                      {6, true, false, false},  {-2, true, false, false}, {-1, false, false, false}};
  for (const Row& row : rows) {
    SetMode(row.mode);
    std::filesystem::remove(file_);
    EXPECT_EQ(DiagIsEnabled(DiagChannel::kGeneral), row.enabled) << row.mode;
    DiagWrite("100%s\n", DiagChannel::kGeneral);
    EXPECT_EQ(LogText(), row.written ? "100%s\r\n" : "") << row.mode;
    EXPECT_EQ(Shown(), row.shown ? "100%s\n" : "") << row.mode;
    SetSettingInt(kDiagSection, u"General", 4);  // the usual modes are read once
    const bool isUsual = row.mode >= -1 && row.mode <= 2;
    EXPECT_EQ(DiagGetMode(DiagChannel::kGeneral), isUsual ? std::max(row.mode, 0) : 4) << row.mode;
  }
}

TEST_F(DiagnosticLog, LineEndsBecomeCrLf) {
  const std::pair<std::string, std::string> rows[] = {
      {"a\nb\n", "a\r\nb\r\n"}, {"a\nb", "a\r\nb"},   {"\n\n", "\r\n\r\n"},     {"", ""},
      {"a\r\n", "a\r\r\n"},     {"%d%n%s", "%d%n%s"}, {"\xFF\x80", "\xFF\x80"},
  };
  SetMode(2);
  for (const auto& [text, written] : rows) {
    std::filesystem::remove(file_);
    DiagWrite(text, DiagChannel::kGeneral);
    EXPECT_EQ(LogText(), written);
  }
}

TEST_F(DiagnosticLog, TraceTexts) {
  SetMode(2);
  TraceSend("M 1\r", -3);
  platform_.clock.ticks = 5;
  TraceReceive("12\r\n34\r5", 1000, 0xFFFFFFFFu, 0, " \r\n");
  EXPECT_EQ(LogText(),
            "SendToComm = |M^1m|, nError = -3\r\n"
            "RcvBuff = Time(ms) 6, Allowed 1000, Sep |^mj|, Return Error 0\r\n"
            "    Rcv Data  1 |12mj|\r\n"
            "    Rcv Data  2 |34m|\r\n"
            "    Rcv Data  3 |5|\r\n");
  std::filesystem::remove(file_);
  TraceReceive("\r\r\r\r\r\r\r\r\r", -1, 6, 7, "");
  EXPECT_EQ(LogText().substr(0, 64), "RcvBuff = Time(ms) -1, Allowed -1, Sep ||, Return Error 7\r\n    R");
  EXPECT_TRUE(LogText().ends_with("    Rcv Data  9 |m|\r\n    Rcv Data 10 ||\r\n"));
  SetMode(0);
  std::filesystem::remove(file_);
  TraceSend("silent", 0);
  TraceReceive("silent", 0, 0, 0, "");
  EXPECT_EQ(LogText(), "");
  for (int c = 0; c < 256; ++c) {
    std::string text(1, static_cast<char>(c));
    MakeVisible(text);
    EXPECT_EQ(text, std::string(1, static_cast<char>(c < 32 ? c + 96 : c == 32 ? '^' : c)));
  }
}

TEST_F(DiagnosticLog, AFileThatGrewTooLongIsDeletedAndTheDiagnosticsGoOff) {
  SetMode(5);
  directory_.Write(file_, std::string(0x100000, 'x'));
  DiagWrite("y", DiagChannel::kGeneral);  // just within the limit
  EXPECT_EQ(LogText().size(), 0x100001u);
  DiagWrite("lost", DiagChannel::kGeneral);
  EXPECT_FALSE(std::filesystem::exists(file_));
  EXPECT_EQ(Shown(), file_ + " deleted");
  EXPECT_EQ(platform_.messages.LastIcon(), MessageIcon::kInformation);
  for (const DiagChannel channel : kChannels) {
    EXPECT_EQ(StoredMode(channel), 0);
    EXPECT_EQ(DiagGetMode(channel), 0);
  }
  DiagWrite("lost", DiagChannel::kGeneral);
  EXPECT_FALSE(std::filesystem::exists(file_));
}

TEST_F(DiagnosticLog, ThePathIsTakenAsItStands) {
  SetMode(2);
  const std::string missing = directory_ / "missing/";
  const std::pair<std::string, std::string> rows[] = {
      {directory_ / "", file_},   {directory_ / ".", directory_ / ".VrxDebug.txt"},
      {missing, ".VrxDebug.txt"}, {std::string(261, '/'), ".VrxDebug.txt"},  // too long to be read
      {"", ".VrxDebug.txt"},
  };
  for (const auto& [path, name] : rows) {
    SetSettingString(kDiagSection, kDiagPathValue, CString::FromUtf8(path));
    EXPECT_EQ(DiagFileName().ToUtf8(), name);
  }
}

TEST_F(DiagnosticLog, WhatCannotBeWrittenLosesTheMessageOnly) {
  SetMode(2);
  DiagWrite("one\n", DiagChannel::kGeneral);
  {
    const auto other = CurrentFileSystem().OpenExclusive(CString::FromUtf8(file_));
    ASSERT_NE(other, nullptr);
    DiagWrite("held by someone else\n", DiagChannel::kGeneral);
  }
#if !defined(_WIN32)
  EXPECT_TRUE(RunInChild([&] {  // a full disk: the file may grow by two bytes
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit = {7, 7};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    DiagWrite("does not fit\n", DiagChannel::kGeneral);
    return true;
  }));
#endif
  EXPECT_EQ(LogText(), "one\r\n");
  std::filesystem::remove(file_);
  std::filesystem::create_directory(file_);
  DiagWrite("a directory in its place\n", DiagChannel::kGeneral);
  EXPECT_TRUE(std::filesystem::is_empty(file_));
  EXPECT_EQ(DiagGetMode(DiagChannel::kGeneral), 2);
  EXPECT_EQ(Shown(), "");
}

TEST_F(DiagnosticLog, SwitchingTellsTheUserAndLeavesTheProcessAlone) {
  CStringArray1 texts;
  for (const WideChar* text : {u"off", u"box", u"file", u"restart"}) texts.Add(text);
  EXPECT_EQ(DiagGetMode(DiagChannel::kGeneral), 0);
  const char* messages[] = {"off\n\n", "box\n\n", "file\n    /log/VrxDebug.txt\n\n"};
  for (uint32_t mode = 0; mode < 3; ++mode) {
    SetGeneralDiagMode(mode, texts, u"/log/");
    EXPECT_EQ(Shown(), messages[mode]);
    EXPECT_EQ(StoredMode(DiagChannel::kGeneral), static_cast<int32_t>(mode));
  }
  EXPECT_EQ(GetSettingString(kDiagSection, kDiagPathValue, u""), u"/log/");
  EXPECT_EQ(DiagGetMode(DiagChannel::kGeneral), 0);
  SetGeneralDiagMode(3, texts, u"/other/");
  EXPECT_EQ(Shown(), "");

  const std::pair<int32_t, int32_t> nextModes[] = {{-1, 0}, {0, 1},  {1, 2},        {2, 0},
                                                   {5, 0},  {-5, 2}, {INT32_MAX, 2}};
  for (const auto& [stored, next] : nextModes) {
    SetSettingInt(kDiagSection, u"Color Sensor", stored);
    CycleSensorDiagMode(texts, u"/sensor/");
    EXPECT_EQ(StoredMode(DiagChannel::kColorSensor), next) << stored;
    EXPECT_EQ(Shown(),
              texts[next].ToUtf8() + (next == 2 ? "\n    /sensor/VrxDebug.txt" : "") + "\n\nrestart");
  }
}

}  // namespace
}  // namespace vrx
