#include "keltrun2/printing/cups_queues.h"

#ifdef KELTRUN2_HAVE_CUPS

#include <cups/cups.h>

#include <cmath>
#include <optional>
#include <utility>

#include "keltrun2/base/automation_error.h"
#include "keltrun2/printing/paper.h"

namespace keltrun {
namespace {

constexpr int kConnectMs = 3000;  // a server that does not answer must not block the host for long
constexpr PaperStrips kUsualStrips = {4.2F, 4.2F, 4.2F, 4.2F};  // if the queue does not say

// A connection to the default print server of the system; false if there is none.
class Server {
 public:
  Server()
      : http_(httpConnect2(cupsServer(), ippPort(), nullptr, AF_UNSPEC, cupsEncryption(), 1,
                           kConnectMs, nullptr)) {}
  ~Server() {
    if (http_ != nullptr) httpClose(http_);
  }
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  http_t* get() const { return http_; }
  explicit operator bool() const { return http_ != nullptr; }

 private:
  http_t* http_;
};

class Queues {
 public:
  explicit Queues(const Server& server) {
    if (server) count_ = cupsGetDests2(server.get(), &queues_);
  }
  ~Queues() { cupsFreeDests(count_, queues_); }
  Queues(const Queues&) = delete;
  Queues& operator=(const Queues&) = delete;

  const cups_dest_t* begin() const { return queues_; }
  const cups_dest_t* end() const { return queues_ + count_; }
  cups_dest_t* Find(const std::string& name) const {
    return cupsGetDest(name.c_str(), nullptr, count_, queues_);
  }

 private:
  int count_ = 0;
  cups_dest_t* queues_ = nullptr;
};

// The options of a print job.
class Options {
 public:
  void Add(const char* name, const char* value) {
    count_ = cupsAddOption(name, value, count_, &options_);
  }
  ~Options() { cupsFreeOptions(count_, options_); }
  Options() = default;
  Options(const Options&) = delete;
  Options& operator=(const Options&) = delete;

  int count() const { return count_; }
  cups_option_t* get() const { return options_; }

 private:
  int count_ = 0;
  cups_option_t* options_ = nullptr;
};

int Hundredths(float mm) { return static_cast<int>(std::lround(mm * 100)); }

// The unprintable edges of a paper, as the queue reports them.
PaperStrips AskStrips(const std::string& name, const Paper& paper) {
  const Server server;
  const Queues queues(server);
  cups_dest_t* queue = queues.Find(name);
  if (queue == nullptr) return kUsualStrips;
  cups_dinfo_t* info = cupsCopyDestInfo(server.get(), queue);
  if (info == nullptr) return kUsualStrips;
  cups_size_t size{};
  const bool known =
      cupsGetDestMediaBySize(server.get(), queue, info, Hundredths(paper.Width),
                             Hundredths(paper.Height), CUPS_MEDIA_FLAGS_DEFAULT, &size) != 0;
  cupsFreeDestInfo(info);
  if (!known) return kUsualStrips;
  const auto mm = [](int hundredths) { return static_cast<float>(hundredths) / 100; };
  return {mm(size.left), mm(size.top), mm(size.right), mm(size.bottom)};
}

[[noreturn]] void RaiseServerError(const std::string& name) {
  throw AutomationError(KR_ERROR_INVALID_CALL,
                        "cannot print on " + name + ": " + cupsLastErrorString());
}

// Creates a job and sends its document. The job is canceled if the document does not arrive.
void SubmitJob(const std::string& name, const std::string& pdf, const Options& options) {
  const Server server;
  if (!server) RaiseServerError(name);
  const int job =
      cupsCreateJob(server.get(), name.c_str(), "Keltrun2", options.count(), options.get());
  if (job == 0) RaiseServerError(name);
  const bool sent =
      cupsStartDocument(server.get(), name.c_str(), job, "Keltrun2", CUPS_FORMAT_PDF, 1) ==
          HTTP_STATUS_CONTINUE &&
      cupsWriteRequestData(server.get(), pdf.data(), pdf.size()) == HTTP_STATUS_CONTINUE;
  const ipp_status_t status = cupsFinishDocument(server.get(), name.c_str());
  if (sent && status <= IPP_STATUS_OK_CONFLICTING) return;
  const std::string reason = cupsLastErrorString();
  cupsCancelJob2(server.get(), name.c_str(), job, 0);
  throw AutomationError(KR_ERROR_INVALID_CALL, "cannot print on " + name + ": " + reason);
}

// A printer that sends each document to its queue as one PDF job.
class QueuePrinter final : public Printer {
 public:
  explicit QueuePrinter(std::string name) : name_(std::move(name)) {}

  const std::string& DeviceName() const override { return name_; }
  void SetPaperSize(std::int32_t PaperSize) override {
    sheets_.SetPaperSize(PaperSize);
    strips_.reset();
  }
  void SetOrientation(std::int32_t Orientation) override { sheets_.SetOrientation(Orientation); }
  PaperMetrics Metrics() const override {
    if (!strips_) strips_ = AskStrips(name_, sheets_.SheetPaper());
    return sheets_.Metrics(*strips_);
  }
  DrawingSurface& NewSheet() override { return sheets_.NewSheet(Metrics()); }
  DrawingSurface& Measure() override { return sheets_.Measure(); }

  void EndDocument() override {
    if (sheets_.IsEmpty()) return;
    Options options;
    options.Add("media", sheets_.SheetPaper().MediaName);
    options.Add("print-scaling", "none");  // the sheets have the size of the paper
    SubmitJob(name_, sheets_.Finish(), options);
  }

 private:
  std::string name_;
  Sheets sheets_;
  mutable std::optional<PaperStrips> strips_;  // queried once per paper size
};

}  // namespace

std::vector<std::string> QueueNames() {
  std::vector<std::string> names;
  const Server server;
  for (const cups_dest_t& queue : Queues(server)) {
    if (queue.instance == nullptr) names.emplace_back(queue.name);
  }
  return names;
}

std::shared_ptr<Printer> OpenQueue(std::string_view name) {
  const Server server;
  std::string wanted(name);
  if (Queues(server).Find(wanted) == nullptr) return nullptr;
  return std::make_shared<QueuePrinter>(std::move(wanted));
}

}  // namespace keltrun

#else

namespace keltrun {

std::vector<std::string> QueueNames() { return {}; }
std::shared_ptr<Printer> OpenQueue(std::string_view /*name*/) { return nullptr; }

}  // namespace keltrun

#endif
