// The client's services of the host, on real files and programs.
#include <gtest/gtest.h>
#include <png.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <future>
#include <map>
#include <thread>

#include "client/dynamic_content.h"
#include "client/emotions.h"
#include "client/picture_editor.h"
#include "client/run_program.h"
#include "client/translation.h"
#include "kexbase/md5.h"
#include "kexbase/strings.h"
#include "kexcom/result.h"
#include "temp_folder.h"

namespace imsdk::host {
namespace {

using std::chrono::milliseconds;

TEST(RunProgram, GivesTheOutputOrTheReason) {
  const std::atomic<bool> go_on{false};
  const std::string large(300'000, 'x');  // more than a pipe holds at once
  const int inherited = ::dup(STDERR_FILENO);
  const struct {
    std::vector<std::string> command;
    std::string input;
    ProgramLimits limits;
    bool ok;
    std::string said;
  } cases[] = {
      {{"cat"}, large, {}, true, large},
      {{"cat"}, "", {}, true, ""},
      {{"sh", "-c", "cat </dev/stdin >/dev/stdout"}, "x", {}, true, "x"},
      {{"tr", "a-z", "A-Z"}, "\"$(id)\" é", {}, true, "\"$(ID)\" é"},  // no shell reads it
      {{"true"}, large, {}, true, ""},                                 // does not read its input
      {{"false"}, "x", {}, false, "the program failed"},
      {{"sh", "-c", "cd /proc/self/fd; echo *"}, "", {}, true, "0 1 2 3\n"},  // 3: the folder's own
      {{"no-such-program-here"}, "x", {}, false, "no-such-program-here: No such file or directory"},
      {{"sleep", "60"}, "", {milliseconds(50)}, false, "the program took too long"},
      {{"sh", "-c", "exec >&-; sleep 60"},
       "",
       {milliseconds(50)},
       false,
       "the program took too long"},
      {{"yes"}, "", {milliseconds(20'000), 1000}, false, "the program wrote too much"},
  };
  for (const auto& c : cases) {
    const ProgramOutcome outcome = RunProgram(c.command, c.input, c.limits, go_on);
    EXPECT_EQ(outcome.ok, c.ok) << c.command[0] << outcome.reason;
    EXPECT_TRUE((c.ok ? outcome.output : outcome.reason) == c.said)
        << c.command[0] << outcome.reason;
  }
  ::close(inherited);
  const std::atomic<bool> stop{true};
  EXPECT_EQ(RunProgram({"sleep", "60"}, "", {}, stop).reason, "the host stops");
}

struct Answer {
  biz::ResultCode result;
  std::wstring text;
};

// Waits for what `start` is given to call.
template <class Start>
Answer Await(const Start& start) {
  const auto answer = std::make_shared<std::promise<Answer>>();
  auto future = answer->get_future();
  start([answer](const biz::ResultCode& result, const std::wstring& text) {
    answer->set_value({result, text});
  });
  return future.get();
}

Answer Translate(Translation& translation, const std::wstring& text) {
  return Await([&](client::IMTranslateCallback done) {
    translation.Translate({L"cnbazaro", L"harbor"}, L"5", text, std::move(done));
  });
}

TEST(TranslationTest, RunsTheProgramThatTheUserNamed) {
  const TempFolder folder;
  const auto file = folder.Write("t.json", R"({"program":"tr","args":["a-z","A-Z"],"mine":[1]})");
  const RefPtr<Translation> translation(new Translation(file));
  std::vector<std::wstring> heard;
  std::vector<int> settings;
  translation->Events().on_translated.connect(
      [&](const biz::IMUserID& account, const std::wstring& msgid, const std::wstring& text) {
        heard.push_back(account.nick + L" " + msgid + L" " + text);
      });
  translation->Events().on_setting_changed.connect([&](int enable) { settings.push_back(enable); });

  EXPECT_TRUE(translation->IsEnabled());
  EXPECT_EQ(Translate(*translation, L"wind from 东").text, L"WIND FROM 东");
  EXPECT_EQ(heard, std::vector<std::wstring>{L"harbor 5 WIND FROM 东"});
  EXPECT_EQ(Translate(*translation, L"").result.code, biz::kEngineEmpty);
  EXPECT_EQ(Translate(*translation, std::wstring(70'000, L'x')).result.code, biz::kEngineTooLarge);

  for (const char* bad : {"", "{}", "[1]", R"({"enable":"1"})"}) {
    EXPECT_FALSE(translation->Report(bad)) << bad;
  }
  EXPECT_TRUE(translation->Report(R"({"enable":0})"));
  EXPECT_EQ(Translate(*translation, L"x").result.text, L"translation is switched off");
  EXPECT_EQ(settings, std::vector<int>{0});
  // The switch lasts, and the user's own keys stay.
  EXPECT_FALSE(RefPtr(new Translation(file))->IsEnabled());
  EXPECT_NE(folder.Read("t.json").find("mine"), std::string::npos);

  // Another program, from the next text on; pages hear of a switch without asking.
  EXPECT_TRUE(translation->Report(R"({"enable":1})"));
  folder.Write("t.json", R"({"program":"rev"})");
  EXPECT_EQ(Translate(*translation, L"wind").text, L"dniw");
  settings.clear();
  std::promise<int> told;
  translation->Events().on_setting_changed.connect([&](int enable) { told.set_value(enable); });
  folder.Write("t.json", R"({"program":"rev","enable":0})");
  auto switched = told.get_future();
  ASSERT_EQ(switched.wait_for(std::chrono::seconds(10)), std::future_status::ready);
  EXPECT_EQ(switched.get(), 0);
  std::filesystem::remove(file);
  EXPECT_EQ(Translate(*translation, L"x").result.text, L"no translation is set up");
  translation->Stop();
  EXPECT_FALSE(Translate(*translation, L"x").result.ok());
}

TEST(TranslationTest, WithoutAProgramThereIsNone) {
  const TempFolder folder;
  for (const char* content : {"", "{oops", "[]", R"({"program":7})"}) {
    const RefPtr<Translation> translation(new Translation(folder.Write("t.json", content)));
    EXPECT_TRUE(translation->Report(R"({"enable":1})"));
    EXPECT_FALSE(translation->IsEnabled()) << content;
    EXPECT_EQ(Translate(*translation, L"x").result.text, L"no translation is set up");
    EXPECT_EQ(folder.Read("t.json"), content);
  }
}

TEST(EmotionsTest, AreThoseOfTheList) {
  const TempFolder folder;
  EXPECT_TRUE(RefPtr(new Emotions(folder.path()))->GetEmotions().empty());
  folder.Write(
      "emotions/list.json",
      R"list([{"shortcut":"/:)","file":"smile.svg"},{"shortcut":"/:("},7,{"file":"x"}])list");
  const auto emotions = RefPtr(new Emotions(folder.path()))->GetEmotions();
  ASSERT_EQ(emotions.size(), 1u);
  EXPECT_EQ(emotions[0].shortcut, L"/:)");
  EXPECT_EQ(emotions[0].path, L"emotions/smile.svg");
}

class WorkerTest : public testing::Test {
 protected:
  WorkerTest() { worker_->Start(); }
  ~WorkerTest() override { worker_->Stop(); }

  const TempFolder folder_;
  const std::shared_ptr<Worker> worker_ = std::make_shared<Worker>("test");
};

TEST_F(WorkerTest, FewJobsWaitAndStoppingBeginsNone) {
  std::atomic<bool> go{false};
  std::atomic<bool> begun{false};
  std::map<std::int32_t, int> outcomes;  // written by one thread at a time
  worker_->Do([&](const biz::ResultCode&) {
    begun = true;
    begun.notify_all();
    go.wait(false);
  });
  begun.wait(false);
  const auto count = [&](const biz::ResultCode& problem) { ++outcomes[problem.code]; };
  for (int i = 0; i < Worker::kMostWaiting + 3; ++i) worker_->Do(count);
  EXPECT_EQ(outcomes, (std::map<std::int32_t, int>{{biz::kEngineBusy, 3}}));
  std::thread stop([&] { worker_->Stop(); });
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  go = true;
  go.notify_all();
  stop.join();
  worker_->Do(count);
  EXPECT_EQ(outcomes[E_UNEXPECTED], Worker::kMostWaiting + 1);
}

TEST_F(WorkerTest, DynamicContentIsAFileWithAPlainName) {
  folder_.Write("data/dynamic/order/u-1.json", R"({"state":"sent"})");
  folder_.Write("data/dynamic/order/bad.json", "{oops");
  folder_.Write("data/secret.json", "{}");
  const auto outside = folder_.Write("outside/u-1.json", R"({"state":"stolen"})");
  const auto dynamic = folder_.path() / "data/dynamic";
  std::filesystem::create_symlink(outside, dynamic / "order/link.json");
  std::filesystem::create_symlink("../../secret.json", dynamic / "order/inner.json");
  std::filesystem::create_symlink(outside.parent_path(), dynamic / "linked");
  const RefPtr<DynamicContent> content(new DynamicContent(folder_.path() / "data", worker_));
  const struct {
    const wchar_t* type;
    const wchar_t* uuid;
    std::int32_t code;
  } cases[] = {{L"order", L"u-1", 0},
               {L"order", L"bad", E_UNEXPECTED},
               {L"order", L"none", biz::kEngineNotFound},
               {L"order", L"link", biz::kEngineNotFound},
               {L"order", L"inner", biz::kEngineNotFound},
               {L"linked", L"u-1", biz::kEngineNotFound},
               {L"..", L"secret", E_INVALIDARG},
               {L"order", L"../../secret", E_INVALIDARG},
               {L"", L"u-1", E_INVALIDARG},
               {L"order", L"", E_INVALIDARG}};
  for (const auto& c : cases) {
    const Answer answer = Await([&](client::IMDynamicCallback done) {
      content->GetContent({}, c.type, c.uuid, std::move(done));
    });
    EXPECT_EQ(answer.result.code, c.code) << c.type << L" " << c.uuid;
    EXPECT_EQ(answer.text, c.code == 0 ? LR"({"state":"sent"})" : L"");
  }
  // The folder itself may be such a link.
  std::filesystem::create_directories(folder_.path() / "other");
  std::filesystem::create_directory_symlink(dynamic, folder_.path() / "other/dynamic");
  const RefPtr<DynamicContent> linked(new DynamicContent(folder_.path() / "other", worker_));
  const Answer answer = Await([&](client::IMDynamicCallback done) {
    linked->GetContent({}, L"order", L"u-1", std::move(done));
  });
  EXPECT_EQ(answer.result.code, biz::kEngineNotFound);
}

// A picture whose left half is red and whose right half is transparent.
std::string HalfRed(unsigned width, unsigned height) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = width;
  image.height = height;
  image.format = PNG_FORMAT_RGBA;
  std::vector<png_byte> pixels(PNG_IMAGE_SIZE(image));
  for (std::size_t i = 0; i < pixels.size(); i += 4) {
    if (i / 4 % width < width / 2) pixels[i] = pixels[i + 3] = 255;
  }
  png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
  std::string file(size, '\0');
  EXPECT_TRUE(png_image_write_to_memory(&image, file.data(), &size, 0, pixels.data(), 0, nullptr));
  file.resize(size);
  return file;
}

TEST_F(WorkerTest, EditedPicturesFitAndKeepTheirLook) {
  const std::string picture = HalfRed(3000, 30);
  folder_.Write("files/a/big.png", picture);
  folder_.Write("files/a/text.png", "no picture");
  folder_.Write("outside.png", picture);
  const RefPtr<PictureEditor> editor(new PictureEditor(folder_.path()));
  const auto edit = [&](const wchar_t* file, const std::wstring& md5) {
    return Await([&](auto done) {
      editor->EditImage(base::FilePath(file), md5,
                        [done](const biz::ResultCode& result, const base::FilePath& edited) {
                          done(result, edited.value());
                        });
    });
  };
  EXPECT_EQ(edit(L"files/a/none.png", L"").result.code, biz::kEngineNotFound);
  EXPECT_EQ(edit(L"outside.png", L"").result.code, biz::kEngineNotFound);
  EXPECT_EQ(edit(L"files/../outside.png", L"").result.code, biz::kEngineNotFound);
  EXPECT_EQ(edit(L"files/a/text.png", L"").result.code, E_INVALIDARG);
  EXPECT_EQ(edit(L"files/a/big.png", L"00").result.code, E_INVALIDARG);

  const Answer edited = edit(L"files/a/big.png", base::UTF8ToWide(base::MD5String(picture)));
  ASSERT_TRUE(edited.result.ok()) << edited.result.text;
  const std::string made = folder_.Read(base::WideToUTF8(edited.text));
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  ASSERT_TRUE(png_image_begin_read_from_memory(&image, made.data(), made.size()));
  EXPECT_EQ(image.width, kLongestSide);
  EXPECT_EQ(image.height, 20u);
  image.format = PNG_FORMAT_RGBA;
  std::vector<png_byte> pixels(PNG_IMAGE_SIZE(image));
  ASSERT_TRUE(png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr));
  EXPECT_EQ(std::vector<png_byte>(pixels.begin(), pixels.begin() + 4),
            (std::vector<png_byte>{255, 0, 0, 255}));
  EXPECT_EQ(pixels[(kLongestSide - 1) * 4 + 3], 0);
  EXPECT_EQ(folder_.Read("files/a/big.png"), picture);
}

TEST_F(WorkerTest, ManyPicturesAreRefusedAndNoneHoldsUpTheEnd) {
  folder_.Write("files/big.png", HalfRed(3000, 3000));
  const RefPtr<PictureEditor> editor(new PictureEditor(folder_.path()));
  constexpr int kAsked = 100;
  std::atomic<int> answered{0};
  std::atomic<int> busy{0};
  for (int i = 0; i < kAsked; ++i) {
    editor->EditImage(base::FilePath(L"files/big.png"), L"",
                      [&](const biz::ResultCode& result, const base::FilePath&) {
                        ++answered;
                        busy += result.code == biz::kEngineBusy;
                      });
  }
  EXPECT_GE(busy, kAsked / 2);
  const auto start = std::chrono::steady_clock::now();
  editor->Stop();
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
  EXPECT_EQ(answered, kAsked) << "each once";
}

}  // namespace
}  // namespace imsdk::host
