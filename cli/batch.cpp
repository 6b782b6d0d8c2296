// fennick convert --to EXT INPUT... --out DIR: many designs to one format, on
// every core, each through the whole save pipeline.
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <mutex>
#include <thread>
#include <utility>

#include "archive/al_pk_archive.h"
#include "archive/file_operations.h"
#include "cli/commands.h"
#include "core/design_path.h"
#include "core/text.h"
#include "core/user_interface.h"
#include "tools/save_pipeline.h"

namespace fennick::cli {
namespace {

struct Job {
  explicit Job(std::string in, std::string badInput = {}) : input(std::move(in)), cause(std::move(badInput)) {}

  std::string input;   // a file or a "Zip:archive:member" path
  std::string cause;   // set before the run when the input itself is bad
  std::string output;  // the name handed to the pipeline: DIR/stem.ext
  std::vector<std::string> written;
  std::vector<std::string> messages;  // what the pipeline said while saving this design
  bool failed = false;
};

// The job the calling worker runs; the pipeline's messages go to it.
thread_local Job* currentJob = nullptr;

// Collects the message boxes of the pipeline ("Save Error" ...) into the
// job that caused them, so that they show on that design's line and never
// interleave; a message from outside a job goes to the interface it replaced.
class JobInterface : public UserInterface {
 public:
  explicit JobInterface(UserInterface& outside) : outside_(outside) {}
  MessageAnswer ShowMessage(const std::string& text, const std::string& caption, MessageButtons buttons) override {
    if (currentJob == nullptr) return outside_.ShowMessage(text, caption, buttons);
    currentJob->messages.push_back(caption.empty() ? text : caption + ": " + text);
    // The safe answer, as the headless interface gives it.
    return SafeAnswer(buttons);
  }
  void SetWaitCursor(bool) override {}

 private:
  UserInterface& outside_;
};

bool HasReader(const std::string& path) {
  const FormatEntry* format = FindFormat(FormatFromExtension(LowerExtension(path)));
  return format != nullptr && format->read != nullptr;
}

void AddZipMembers(const std::string& zipFile, std::vector<Job>& jobs) {
  ALPkArchive archive(zipFile);
  ALEntryList list;
  if (archive.ReadDirectory(list) < 0) {
    jobs.emplace_back(zipFile, archive.status.GetStatusDetail());
    return;
  }
  for (auto& entry : list) {
    if (HasReader(entry->GetName())) jobs.emplace_back("Zip:" + zipFile + ":" + entry->GetName());
  }
}

// One job per design of the inputs, in the order given; a folder's designs
// sorted by path, so that runs and their free names repeat.
std::vector<Job> CollectJobs(const std::vector<std::string>& inputs) {
  namespace fs = std::filesystem;
  std::vector<Job> jobs;
  for (const std::string& input : inputs) {
    std::error_code error;
    if (input.rfind("Zip:", 0) != 0 && fs::is_directory(input, error)) {
      std::vector<std::string> found;
      for (fs::recursive_directory_iterator it(input, error), end; !error && it != end; it.increment(error)) {
        if (it->is_regular_file(error) && HasReader(it->path().string())) found.push_back(it->path().string());
      }
      if (error) jobs.emplace_back(input, "cannot be searched: " + error.message());
      std::sort(found.begin(), found.end());
      for (std::string& path : found) jobs.emplace_back(std::move(path));
    } else if (input.rfind("Zip:", 0) != 0 && LowerExtension(input) == "zip") {
      AddZipMembers(input, jobs);
    } else {
      jobs.emplace_back(input);
    }
  }
  return jobs;
}

// True when `name` is `stem` followed by " " and a digit: a name that the
// pieces of a split `stem` ("rose 2", "rose 3"...) may take.
bool IsPieceName(const std::string& name, const std::string& stem) {
  return name.size() > stem.size() + 1 && name.compare(0, stem.size(), stem) == 0 && name[stem.size()] == ' ' &&
         name[stem.size() + 1] >= '0' && name[stem.size() + 1] <= '9';
}

// Gives each job its output name before any worker starts, in input order:
// the first free variant (rose, rose(2), ...) of its stem that no earlier job
// holds, no file in `folder` has, and that no job's pieces can take. The
// pipeline still runs in its free-name mode, which keeps a piece off a file
// that was there before; since the jobs' names and their pieces are kept
// apart here, no two workers ever look for the same free name at once.
void ReserveOutputNames(std::vector<Job>& jobs, const std::string& folder, const std::string& extension,
                        const std::string& writtenExtension) {
  std::vector<std::string> taken;  // lower case: a name differing only in case is no safe name either
  const std::string prefix = folder.back() == '/' ? folder : folder + "/";
  for (Job& job : jobs) {
    if (!job.cause.empty()) continue;
    std::string stem = DesignPath(job.input).GetStem();
    DesignPath candidate(prefix + (stem.empty() ? "design" : stem) + "." + writtenExtension);
    for (;; candidate.NextVariant()) {
      const std::string name = AsciiLower(candidate.GetStem());
      const bool clash = std::any_of(taken.begin(), taken.end(), [&](const std::string& other) {
        return other == name || IsPieceName(name, other) || IsPieceName(other, name);
      });
      if (!clash && !FolderExists(candidate.FullName())) {
        taken.push_back(name);
        break;
      }
    }
    candidate.ChangeExtension(extension);
    job.output = candidate.ToString();
  }
}

void Run(Job& job, const ConversionSettings& settings, FormatCode format) {
  if (!job.cause.empty()) {
    job.failed = true;
    return;
  }
  Design design;
  job.cause = ReadDesignOrCause(job.input, design, LastFile::kLeave);
  if (!job.cause.empty()) {
    job.failed = true;
    return;
  }
  design.name = job.output;
  std::vector<DesignPath> written;
  currentJob = &job;
  // Written in place: a design the hoop fit refuses is left as it was, for the hint.
  const int files = SaveDesign(std::move(design), &written, 0, &settings);
  currentJob = nullptr;
  for (const DesignPath& path : written) job.written.push_back(path.ToString());
  // A split whose later piece fails has written files and still failed.
  job.failed = files == 0 || !job.messages.empty();
  if (job.failed && job.messages.empty()) job.cause = "nothing was saved";
  if (files == 0) {
    if (std::string hint = HoopHint(design, settings, format); !hint.empty()) job.messages.push_back(std::move(hint));
  }
}

std::string ResultLine(const Job& job) {
  std::string line = job.input;
  if (!job.written.empty()) {
    line += " -> ";
    for (size_t i = 0; i < job.written.size(); ++i) line += (i == 0 ? "" : ", ") + job.written[i];
  }
  if (job.failed) {
    line += job.written.empty() ? ": " : "; ";
    std::string cause = job.cause;
    for (const std::string& message : job.messages) cause += (cause.empty() ? "" : "; ") + message;
    line += cause;
  }
  return line;
}

// Prints finished jobs' lines in input order as soon as all before them are
// done, and a progress bar on standard error when that is a terminal.
class Report {
 public:
  explicit Report(const std::vector<Job>& jobs) : jobs_(jobs), done_(jobs.size(), false), bar_(isatty(2) != 0) {}

  void Finished(size_t index) {
    const std::lock_guard<std::mutex> lock(mutex_);
    done_[index] = true;
    ++finished_;
    if (bar_) std::fputs("\r\033[K", stderr);
    for (; printed_ < jobs_.size() && done_[printed_]; ++printed_) {
      std::printf("%s\n", ResultLine(jobs_[printed_]).c_str());
    }
    std::fflush(stdout);
    if (bar_) DrawBar();
  }

  void End() {
    if (bar_) std::fputs("\r\033[K", stderr);
  }

 private:
  void DrawBar() {
    constexpr size_t kWidth = 30;
    const size_t filled = jobs_.size() == 0 ? kWidth : finished_ * kWidth / jobs_.size();
    std::fprintf(stderr, "[%s%s] %zu/%zu", std::string(filled, '#').c_str(), std::string(kWidth - filled, '.').c_str(),
                 finished_, jobs_.size());
    std::fflush(stderr);
  }

  const std::vector<Job>& jobs_;
  std::vector<bool> done_;
  const bool bar_;
  std::mutex mutex_;
  size_t finished_ = 0;
  size_t printed_ = 0;
};

}  // namespace

int ConvertBatch(const std::vector<std::string>& inputs, const std::string& extension, const std::string& folder,
                 const ConversionSettings& settings) {
  const auto start = std::chrono::steady_clock::now();
  if (!EnsureFolder(folder)) {
    ReportError(folder, "is not a folder and cannot be made one");
    return 1;
  }
  std::vector<Job> jobs = CollectJobs(inputs);
  const FormatCode format = FormatFromExtension(extension);
  // The file the pipeline writes: the card formats go out as PES, SHV as VIP,
  // and the notes under ".Txt".
  const FormatCode saved = SavedFormat(format);
  const std::string written =
      format == kFormatTxt ? "Txt" : saved != format ? AsciiLower(FormatExtension(saved)) : extension;
  ReserveOutputNames(jobs, folder, extension, written);

  Report report(jobs);
  JobInterface ui(CurrentUserInterface());
  SetUserInterface(&ui);
  std::atomic<size_t> next{0};
  const auto work = [&] {
    for (size_t index; (index = next++) < jobs.size();) {
      Run(jobs[index], settings, saved);
      report.Finished(index);
    }
  };
  const size_t workers = std::clamp<size_t>(std::thread::hardware_concurrency(), 1, std::max<size_t>(jobs.size(), 1));
  std::vector<std::thread> threads;
  for (size_t i = 1; i < workers; ++i) threads.emplace_back(work);
  work();  // the calling thread is one of the workers
  for (std::thread& thread : threads) thread.join();
  SetUserInterface(nullptr);
  report.End();

  const size_t failed = static_cast<size_t>(std::count_if(jobs.begin(), jobs.end(), [](const Job& job) { return job.failed; }));
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  std::printf("%zu converted, %zu failed, %.2f s\n", jobs.size() - failed, failed, seconds);
  return failed == 0 ? 0 : 1;
}

}  // namespace fennick::cli
