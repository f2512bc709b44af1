// The path of a message into the log file: the real logger with its writer thread
// and file, whose new bytes are compared after every input.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <bit>
#include <condition_variable>
#include <cstdio>
#include <mutex>

#include <spdlog/sinks/sink.h>
#include <spdlog/spdlog.h>

#include "common/logger.h"
#include "fake_platform.h"
#include "notebook/story/temporary_folder.h"
#include "target.h"

namespace nuvelta::fuzz {
namespace {

constexpr size_t kLongestMessage = 4095;
constexpr size_t kLongestName = 1024;

// Stands behind the file's sink and tells when records have reached the file.
class WrittenSignal final : public spdlog::sinks::sink {
 public:
  void log(const spdlog::details::log_msg& /*message*/) override {
    const std::lock_guard lock(m_mutex);
    ++m_logged;
  }
  void flush() override {
    {
      const std::lock_guard lock(m_mutex);
      m_flushed = m_logged;
    }
    m_changed.notify_one();
  }
  void set_pattern(const std::string& /*pattern*/) override {}
  void set_formatter(std::unique_ptr<spdlog::formatter> /*formatter*/) override {}

  void Await(size_t records) {
    std::unique_lock lock(m_mutex);
    m_awaited += records;
    Require(
        m_changed.wait_for(lock, std::chrono::seconds(60), [&] { return m_flushed >= m_awaited; }),
        "every record is written");
  }

 private:
  std::mutex m_mutex;
  std::condition_variable m_changed;
  size_t m_logged = 0;
  size_t m_flushed = 0;
  size_t m_awaited = 0;
};

// The service's log in a temporary folder.
class LogUnderTest {
 public:
  explicit LogUnderTest(FakePlatform& fake) {
    m_path = (m_folder.Path() / "fuzz.log").string();
    fake.files.library_path = m_path;
    CLogger::GetInstance().InitLogger();
    spdlog::get("MAServiceLog")->sinks().push_back(m_signal);
    Open();
  }
  ~LogUnderTest() {
    CLogger::GetInstance().MakeAfreshForSimulation();
    close(m_file);
  }
  LogUnderTest(const LogUnderTest&) = delete;
  LogUnderTest& operator=(const LogUnderTest&) = delete;

  // What the next `records` records have added to the file.
  std::string Written(size_t records) {
    m_signal->Await(records);
    std::string text = ReadOn();
    struct stat now {};
    // A full file is put aside between two records.
    if (stat(m_path.c_str(), &now) == 0 && now.st_ino != m_inode) {
      close(m_file);
      Open();
      text += ReadOn();
    }
    return text;
  }

 private:
  void Open() {
    m_file = open(m_path.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat opened {};
    Require(m_file >= 0 && fstat(m_file, &opened) == 0, "the log file is there");
    m_inode = opened.st_ino;
  }

  std::string ReadOn() const {
    std::string text;
    std::array<char, 1U << 15U> buffer;
    for (ssize_t count = 0; (count = read(m_file, buffer.data(), buffer.size())) > 0;) {
      text.append(buffer.data(), static_cast<size_t>(count));
    }
    return text;
  }

  story::TemporaryFolder m_folder;
  std::string m_path;
  std::shared_ptr<WrittenSignal> m_signal = std::make_shared<WrittenSignal>();
  int m_file = -1;
  ino_t m_inode = 0;
};

std::string Printed(const char* format, auto... arguments) {
  std::string text(static_cast<size_t>(std::snprintf(nullptr, 0, format, arguments...)), ' ');
  std::snprintf(text.data(), text.size() + 1, format, arguments...);
  return text;
}

// Logs what one input says and keeps what the file must hold of it.
class Story {
 public:
  explicit Story(FakePlatform& fake) : m_fake(fake) {}

  void Write(int level, const std::string& name, const char* format, auto... arguments) {
    CLogger::GetInstance().WriteLog(level, name.c_str(), format, arguments...);
    if (level < 1 || level > 6) return;
    const std::string message = Printed(format, arguments...).substr(0, kLongestMessage);
    constexpr const char* kTags[] = {"", " e :   ", " i :   ", " w :   ", " i :   "};
    if (level <= 4) Expect(Thread() + kTags[level] + message);
    if (level == 5) Expect(message);
    if (level == 6) Expect(Thread() + " h :   " + Cut(name) + ", " + message);
  }

  void WriteScope(char sign, const std::string& name) {
    CLogger::GetInstance().WriteTraceScope(sign, name.c_str());
    Expect(Thread() + " h : " + sign + ' ' + Cut(name));
  }

  size_t Records() const { return m_records; }
  const std::string& Expected() const { return m_expected; }

 private:
  std::string Thread() const { return Printed("%08x", m_fake.threads.thread_id); }
  static std::string Cut(const std::string& name) {
    return std::string(name.c_str()).substr(0, kLongestName);
  }

  void Expect(const std::string& text) {
    const auto since = m_fake.clock.now.time_since_epoch();
    const auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(since).count();
    const std::tm utc = m_fake.clock.localtime(ms / 1000);
    m_expected +=
        Printed("%04d-%02d-%02d %02d:%02d:%02d.%03d ", utc.tm_year + 1900, utc.tm_mon + 1,
                utc.tm_mday, utc.tm_hour, utc.tm_min, utc.tm_sec, static_cast<int>(ms % 1000)) +
        text + "\r\n";
    ++m_records;
  }

  FakePlatform& m_fake;
  std::string m_expected;
  size_t m_records = 0;
};

// Texts as long as the buffers and longer, from few bytes.
std::string TakeText(Input& input) {
  const uint32_t times = 1 + input.Below(9);
  const std::string part = input.Text(600);
  std::string text;
  for (uint32_t i = 0; i < times; ++i) text += part;
  return text;
}

void WriteOne(Input& input, Story& story) {
  const uint32_t kind = input.Below(8);
  const auto level = static_cast<int8_t>(input.Byte());  // mostly none, or 1 to 6
  const int number = std::bit_cast<int>(input.Word());
  const std::string name = TakeText(input);
  const std::string text = TakeText(input);
  switch (kind) {
    case 0:
      return story.WriteScope((level & 1) != 0 ? '+' : '-', name);
    case 1:
      return story.Write(level, name, "[%d]baseboard_manufacturer_ = %s", number, text.c_str());
    case 2:
      return story.Write(level, name, "because item.time_diff[%.05f day] ; delete (%s)",
                         std::bit_cast<float>(number) * 1e200, text.c_str());
    case 3:
      return story.Write(level, name, "\r\n100%% {} %s %%s {0} 0x%x \n", text.c_str(), number);
    case 4:
      return story.Write(level, name, "%08d %lld %s%s", number, int64_t{number} << 31, text.c_str(),
                         name.c_str());
    default:
      return story.Write(1 + level % 6, name, "%s", text.c_str());
  }
}

void Run(Bytes bytes) {
  static FakePlatform fake;
  static LogUnderTest log(fake);
  Input input(bytes);
  fake.threads.thread_id = input.Word();
  // Not the first second of 1970, which the logging library takes for no time.
  const std::chrono::nanoseconds since((uint64_t{input.Word()} + 1) * 1000000000U +
                                       uint64_t{input.Byte()} * 3906249U);
  fake.clock.now = std::chrono::system_clock::time_point(since);
  Story story(fake);
  for (uint32_t count = 1 + input.Below(3); count > 0; --count) WriteOne(input, story);
  story.Write(kLogInfo, "", "%s", "the end");  // behind what must not have been written
  Require(log.Written(story.Records()) == story.Expected(), "the file holds these lines only");
}

const Registration g_registration("logger", Run);

}  // namespace
}  // namespace nuvelta::fuzz
