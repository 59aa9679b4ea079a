// The parts that Windows stands behind: the registry, exclusive files, the zone of the machine, and the resources of the module.

#include <ctime>
#include <filesystem>
#include <gtest/gtest.h>
#include <vector>

#include <vrxmath/platform/clock.h>
#include <vrxmath/platform/file_system.h>
#include <vrxmath/platform/files.h>
#include <vrxmath/platform/locale.h>
#include <vrxmath/platform/win32/registry_settings_store.h>
#include <vrxmath/platform/win32/win32.h>

#include "tests/platform/file_checks.h"
#include "tests/testing/second_process.h"

namespace vrx {
namespace {

namespace fs = std::filesystem;
using platform_internal::RegistrySettingsStore;

constexpr const wchar_t* kPrivate = L"VrxMathTest";

// HKEY_CURRENT_USER leads to a key of the test's own, in which only "software" exists.
class Registry : public testing::Test {
 protected:
  Registry() {
    if (!test::SecondProcess::IsRunning()) ::RegDeleteTreeW(HKEY_CURRENT_USER, kPrivate);
    ::RegCreateKeyW(HKEY_CURRENT_USER, kPrivate, &key_);
    HKEY software = nullptr;
    ::RegCreateKeyW(key_, L"software", &software);
    ::RegCloseKey(software);
    ::RegOverridePredefKey(HKEY_CURRENT_USER, key_);
  }
  ~Registry() override {
    ::RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
    if (!test::SecondProcess::IsRunning()) ::RegDeleteTreeW(HKEY_CURRENT_USER, kPrivate);
    ::RegCloseKey(key_);
  }

  // Stores bytes as another program might.
  void SetRaw(DWORD type, std::wstring_view text, std::size_t bytes) {
    HKEY section = nullptr;
    ASSERT_EQ(::RegOpenKeyW(key_, L"software\\Ostrel", &section), ERROR_SUCCESS);
    ::RegSetValueExW(section, L"A", 0, type, reinterpret_cast<const BYTE*>(text.data()),
                     static_cast<DWORD>(bytes));
    ::RegCloseKey(section);
  }

  const SettingsPath path_ = {u"software", u"Ostrel"};
  HKEY key_ = nullptr;
  RegistrySettingsStore store_;
};

TEST_F(Registry, ValuesOfBothTypesComeBack) {
  EXPECT_FALSE(store_.OpenKey({u"software", u"Ostrel"}, false));
  EXPECT_FALSE(store_.OpenKey({u"Elsewhere", u"Ostrel"}, true));  // the outermost key is never made
  EXPECT_TRUE(store_.OpenKey(path_, true));
  EXPECT_FALSE(store_.Read(path_, u"A"));
  for (const SettingValue& value : {SettingValue(INT32_MIN), SettingValue(CString()), SettingValue(-1),
                                    SettingValue(CString(std::u16string(260, u'\u0416')))}) {
    EXPECT_TRUE(store_.Write(path_, u"A", value));
    EXPECT_EQ(store_.Read({u"SOFTWARE", u"ostrel"}, u"a"), value);
  }
  EXPECT_TRUE(store_.Write(path_, u"A", CString(std::u16string(261, u'x'))));
  EXPECT_FALSE(store_.Read(path_, u"A"));
  EXPECT_TRUE(store_.Write({u"software", u"Ostrel", u"Below"}, u"", 7));
  const auto entries = store_.List(path_);
  ASSERT_EQ(entries.size(), 2u);
  EXPECT_EQ(std::get<CString>(entries[0].value).GetLength(), 261);
  EXPECT_EQ(entries[1].key.back(), u"Below");
  EXPECT_FALSE(store_.Write(path_, std::u16string(kMaxValueName + 1, u'n'), 1));
}

TEST_F(Registry, WhatOtherProgramsStored) {
  struct Row {
    DWORD type;
    std::size_t bytes;
    std::optional<SettingValue> read;
  };
  const Row rows[] = {{REG_SZ, 4, CString(u"ab")},         {REG_SZ, 6, CString(u"ab")},  // its terminator too
                      {REG_SZ, 3, CString(u"a")},          {REG_SZ, 0, CString()},
                      {REG_EXPAND_SZ, 6, std::nullopt},    {REG_BINARY, 4, std::nullopt},
                      {REG_DWORD, 4, int32_t{0x00620061}}, {REG_DWORD, 2, std::nullopt},
                      {REG_QWORD, 8, std::nullopt}};
  ASSERT_TRUE(store_.OpenKey(path_, true));
  for (const Row& row : rows) {
    SetRaw(row.type, std::wstring_view(L"ab\0\0\0", 5), row.bytes);
    EXPECT_EQ(store_.Read(path_, u"A"), row.read) << row.type << ' ' << row.bytes;
  }
}

TEST_F(Registry, TwoProcessesLoseNothing) {
  test::SecondProcess second;
  second.Meet();
  for (WideChar i = 0; i < 200; ++i) {
    const WideChar name[] = {second.IsFirst() ? u'1' : u'2', static_cast<WideChar>(u'\u4E00' + i), 0};
    EXPECT_TRUE(store_.Write(path_, name, int32_t{i}));
  }
  second.Meet();
  EXPECT_EQ(store_.List(path_).size(), 400u);
  EXPECT_EQ(store_.Read(path_, second.IsFirst() ? u"2\u4EC7" : u"1\u4EC7"), SettingValue(199));
}

TEST_F(Registry, AKeyWithoutTheRightToWriteHoldsNothing) {
  ASSERT_TRUE(store_.Write(path_, u"A", 1));
  HKEY section = nullptr;
  ASSERT_EQ(::RegOpenKeyW(key_, L"software\\Ostrel", &section), ERROR_SUCCESS);
  ACL nobody = {};
  SECURITY_DESCRIPTOR access = {};
  ASSERT_TRUE(::InitializeAcl(&nobody, sizeof nobody, ACL_REVISION));
  for (PACL acl : {&nobody, PACL()}) {  // nobody's, and then everybody's again
    ASSERT_TRUE(::InitializeSecurityDescriptor(&access, SECURITY_DESCRIPTOR_REVISION));
    ASSERT_TRUE(::SetSecurityDescriptorDacl(&access, TRUE, acl, FALSE));
    ASSERT_EQ(::RegSetKeySecurity(section, DACL_SECURITY_INFORMATION, &access), ERROR_SUCCESS);
    const bool usable = acl == nullptr;
    EXPECT_EQ(store_.OpenKey(path_, true), usable);
    EXPECT_EQ(store_.Read(path_, u"A").has_value(), usable);
    EXPECT_EQ(store_.Write(path_, u"A", 2), usable);
    EXPECT_EQ(store_.List(path_).size(), usable ? 1u : 0u);
  }
  ::RegCloseKey(section);
}

TEST(WindowsFiles, PathsOfAnyCharacterAndLength) {
  const test::TemporaryFolder folder;
  std::vector<std::wstring> folders;
  std::string deep = folder / "\u0416\u00e9 \u65e5";
  for (int i = 0; i < 6; ++i, deep += '\\' + std::string(60, 'd')) {
    folders.push_back(platform_internal::SystemPath(CString::FromUtf8(deep)));
    ASSERT_TRUE(::CreateDirectoryW(folders.back().c_str(), nullptr)) << deep;
  }
  EXPECT_EQ(test::Replace(deep, "one"), "");
  EXPECT_EQ(test::Replace(deep, "two"), "");
  {
    FileReader reader;
    ASSERT_TRUE(reader.Open(deep));
    std::byte bytes[4];
    EXPECT_EQ(reader.Read(bytes), 3u);
    EXPECT_EQ(bytes[0], std::byte{'t'});
  }
  EXPECT_NE(test::Replace("NUL", "x"), "");
  EXPECT_TRUE(CurrentFileSystem().Delete(CString::FromUtf8(deep)));
  for (auto path = folders.rbegin(); path != folders.rend(); ++path)
    EXPECT_TRUE(::RemoveDirectoryW(path->c_str())) << "something was left behind";
}

TEST(WindowsFiles, ProtectedAndOpenFilesStay) {
  const test::TemporaryFolder folder;
  const std::string path = folder.Write("a", "old");
  fs::permissions(path, fs::perms::owner_read, fs::perm_options::replace);
  EXPECT_NE(test::Replace(path, "new"), "");
  fs::permissions(path, fs::perms::all, fs::perm_options::replace);
  {
    const auto held = CurrentFileSystem().OpenExclusive(CString::FromUtf8(path));
    ASSERT_NE(held, nullptr);
    EXPECT_EQ(CurrentFileSystem().OpenExclusive(CString::FromUtf8(path)), nullptr);
    EXPECT_NE(test::Replace(path, "new"), "");
    EXPECT_TRUE(held->Append("er"));
    EXPECT_EQ(held->Length(), 5u);
  }
  EXPECT_EQ(folder.Read("a"), "older");
  EXPECT_EQ(folder.CountEntries(), 1);
}

// The zone's own rules by the C library, which has its own way to them.
TEST(WindowsClock, LocalTimes) {
  Clock& clock = CurrentClock();
  EXPECT_LE(std::abs(clock.UtcSeconds() - static_cast<int64_t>(::_time64(nullptr))), 1);
  for (int64_t time = 0; time < 4102444800; time += 86400 * 17 + 3661) {
    std::tm fields = {};
    ASSERT_EQ(::_localtime64_s(&fields, &time), 0);
    const CalendarTime local = clock.ToLocal(time);
    EXPECT_EQ(local.hour, fields.tm_hour) << time;
    EXPECT_EQ(local.day, fields.tm_mday) << time;
    EXPECT_EQ(local.dayOfWeek, fields.tm_wday + 1) << time;
    EXPECT_EQ(clock.FromLocal(local), time);
  }
  for (const int64_t time : {int64_t{-62135596800}, int64_t{-1}, int64_t{253402300799}}) {
    const CalendarTime local = clock.ToLocal(time);
    EXPECT_TRUE(!local.IsValid() || clock.FromLocal(local) == time) << time;
  }
  EXPECT_EQ(clock.ToLocal(INT64_MAX), CalendarTime());
}

TEST(WindowsLocale, TheSystemFormatsPictures) {
  const CalendarTime time = UtcCalendar(1798135509);  // Thursday 2026-12-24 18:05:09
  const Locale& locale = CurrentLocale();
  EXPECT_EQ(locale.FormatDate(u"yyyy-MM-dd 'd'", time), CString(u"2026-12-24 d"));
  EXPECT_EQ(locale.FormatTime(u"HH.mm.ss", time), CString(u"18.05.09"));
  for (const WideView picture : {WideView(u"dddd d MMMM yyyy"), WideView(u"ddd MMM yy"), WideView(u"")}) {
    EXPECT_EQ(locale.FormatDate(picture, time), FormatDatePicture(picture, time, locale.Conventions()));
  }
  EXPECT_EQ(locale.FormatDate(u"yyyy", UtcCalendar(-62135596800)), CString(u"0001"));
  EXPECT_FALSE(locale.FormatTime(u"HH", CalendarTime()));
}

}  // namespace
}  // namespace vrx
