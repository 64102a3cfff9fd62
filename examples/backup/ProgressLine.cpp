#include "ProgressLine.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <iostream>

#include "Texts.h"

namespace backup {

using namespace qz;

namespace {

constexpr double betweenDrawings = 0.1;
constexpr double betweenPlainLines = 5;
constexpr double remembered = 5;

double now() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

}  // namespace

// Pace --------------------------------------------------------------------------------------------

void Pace::note(double second, const Amount& done) {
  samples_.push_back({second, done});
  while (samples_.size() > 2 && samples_.front().second < second - remembered) samples_.pop_front();
}

Pace::Rate Pace::rate() const {
  const double seconds = samples_.back().second - samples_.front().second;
  if (seconds <= 0) return {};
  const Amount& first = samples_.front().done;
  const Amount& last = samples_.back().done;
  return {static_cast<double>(last.bytes - first.bytes) / seconds,
          (last.work() - first.work()) / seconds};
}

// The line ----------------------------------------------------------------------------------------

ProgressLine::ProgressLine(std::string title, BackupTask* task)
    : title_(std::move(title)),
      task_(task),
      isTerminal_(::isatty(STDOUT_FILENO) == 1),
      start_(now()),
      shown_(start_) {
  pace_.note(start_, task->done());
  percentObservation_ = observe<float>(task, "percentComplete"_ns,
                                       [this](float, float percent) { percent_ = percent; });
  messageObservation_ = observe<Ref<NSString>>(
      task, "progressMessage"_ns,
      [this](const Ref<NSString>&, const Ref<NSString>& message) { message_ = message; });
  timer_ = NSTimer::scheduledTimer(betweenDrawings, true, [this](NSTimer*) { tick(); });
}

ProgressLine::~ProgressLine() {
  timer_->invalidate();
  clear();
}

void ProgressLine::clear() {
  if (isTerminal_) std::cout << "\r\x1b[K" << std::flush;
}

void ProgressLine::tick() {
  const double second = now();
  pace_.note(second, task_->done());
  if (isTerminal_) {
    draw();
  } else if (second - shown_ >= betweenPlainLines) {
    shown_ = second;
    std::cout << title_ << ": " << figures() << std::endl;
  }
}

// The terminal cuts the line off at its right end instead of going on in the next one.
void ProgressLine::draw() {
  std::string line = "\r\x1b[?7l" + title_ + ' ' + bar() + figures();
  if (message_) line += "  " + printable(message_);
  std::cout << line + "\x1b[K\x1b[?7h" << std::flush;
}

std::string ProgressLine::bar() const {
  if (!task_->knowsPercentComplete()) return {};
  constexpr std::size_t width = 24;
  const auto filled = static_cast<std::size_t>(std::clamp(percent_, 0.0f, 100.0f) / 100 * width);
  return '[' + std::string(filled, '#') + std::string(width - filled, '-') + "] ";
}

// "62% of 1.5 MB, 12.0 MB/s, 01:05 left"
std::string ProgressLine::figures() const {
  const Amount done = task_->done();
  if (!task_->knowsPercentComplete())
    return countText(done.entries) + " entries, " + sizeText(done.bytes);
  std::string text = std::to_string(static_cast<int>(percent_)) + "%, " + sizeText(done.bytes) +
                     " of " + sizeText(task_->expected().bytes);
  const Pace::Rate rate = pace_.rate();
  text += ", " + rateText(rate.bytes, 1);
  const double left = task_->expected().work() - done.work();
  if (rate.work > 0 && left > 0) text += ", " + timeText(left / rate.work) + " left";
  return text;
}

}  // namespace backup
