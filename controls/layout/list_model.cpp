#include "controls/layout/list_model.h"

#include <algorithm>
#include <cstddef>
#include <numeric>

namespace vrx::controls {

bool RowSet::Contains(int32_t row) const {
  const auto run =
      std::ranges::lower_bound(runs_, row, {}, [](const Run& candidate) { return candidate.last; });
  return run != runs_.end() && run->first <= row;
}

void RowSet::Set(int32_t first, int32_t last, bool isMember) {
  if (first > last) std::swap(first, last);
  std::vector<Run> runs;
  Run added{first, last};
  bool isPlaced = !isMember;
  for (const Run& run : runs_) {
    if (isMember && run.last >= first - 1 && run.first <= last + 1) {  // joins the new run
      added = {std::min(added.first, run.first), std::max(added.last, run.last)};
      continue;
    }
    if (!isPlaced && run.first > added.last) {
      runs.push_back(added);
      isPlaced = true;
    }
    if (isMember || run.last < first || run.first > last) {
      runs.push_back(run);
      continue;
    }
    if (run.first < first) runs.push_back({run.first, first - 1});
    if (run.last > last) runs.push_back({last + 1, run.last});
  }
  if (!isPlaced) runs.push_back(added);
  runs_ = std::move(runs);
}

int32_t RowSet::Count() const {
  return std::accumulate(runs_.begin(), runs_.end(), 0,
                         [](int32_t sum, const Run& run) { return sum + run.last - run.first + 1; });
}

std::vector<int32_t> RowSet::Rows() const {
  std::vector<int32_t> rows;
  for (const Run& run : runs_) {
    for (int32_t row = run.first; row <= run.last; ++row) rows.push_back(row);
  }
  return rows;
}

void RowSet::InsertRow(int32_t row) {
  std::vector<Run> runs;
  for (const Run& run : runs_) {
    if (run.last < row) {
      runs.push_back(run);
    } else if (run.first >= row) {
      runs.push_back({run.first + 1, run.last + 1});
    } else {
      runs.push_back({run.first, row - 1});
      runs.push_back({row + 1, run.last + 1});
    }
  }
  runs_ = std::move(runs);
}

void RowSet::RemoveRow(int32_t row) {
  Set(row, row, false);
  std::vector<Run> runs;
  for (Run run : runs_) {
    if (run.first > row) run = {run.first - 1, run.last - 1};
    if (!runs.empty() && runs.back().last + 1 == run.first) {
      runs.back().last = run.last;
    } else {
      runs.push_back(run);
    }
  }
  runs_ = std::move(runs);
}

void ListState::SetCount(int32_t count) {
  count_ = std::max(count, 0);
  if (count_ < INT32_MAX) selected_.Set(count_, INT32_MAX - 1, false);
  current_ = std::min(current_, count_ - 1);
  anchor_ = std::min(anchor_, count_ - 1);
  ScrollTo(top_);
}

void ListState::InsertRow(int32_t row) {
  ++count_;
  selected_.InsertRow(row);
  if (current_ >= row) ++current_;
  if (anchor_ >= row) ++anchor_;
}

void ListState::RemoveRow(int32_t row) {
  --count_;
  selected_.RemoveRow(row);
  for (int32_t* place : {&current_, &anchor_}) {
    if (*place > row || *place == count_) --*place;
  }
  ScrollTo(top_);
}

void ListState::SetHeights(int32_t row, int32_t view) {
  rowHeight_ = std::max(row, 1);
  viewHeight_ = std::max(view, 1);
  ScrollTo(top_);
}

int32_t ListState::RowsInView() const {
  return std::max(viewHeight_ / rowHeight_, 1);
}

int32_t ListState::LastTop() const {
  return std::max(count_ - RowsInView(), 0);
}

void ListState::ScrollTo(int32_t top) {
  top_ = std::clamp(top, 0, LastTop());
}

void ListState::Show(int32_t row) {
  if (row < 0 || row >= count_) return;
  if (row < top_) ScrollTo(row);
  if (row - top_ >= RowsInView()) ScrollTo(row - RowsInView() + 1);
}

int32_t ListState::RowAt(int32_t y) const {
  if (y < 0) return -1;
  const int64_t row = int64_t{top_} + y / rowHeight_;
  return row < count_ ? static_cast<int32_t>(row) : -1;
}

int32_t ListState::GapAt(int32_t y) const {
  const int64_t gap = int64_t{top_} + (y + rowHeight_ / 2) / rowHeight_;
  return static_cast<int32_t>(std::clamp<int64_t>(gap, 0, count_));
}

void ListState::Select(int32_t row) {
  selected_.Clear();
  current_ = anchor_ = row >= 0 && row < count_ ? row : -1;
  if (current_ >= 0) selected_.Set(row, row, true);
  Show(current_);
}

void ListState::SetSelected(int32_t first, int32_t last, bool selected) {
  if (first > last) std::swap(first, last);
  first = std::max(first, 0);
  last = std::min(last, count_ - 1);
  if (first > last) return;
  if (!multiple && selected) selected_.Clear();
  selected_.Set(multiple ? first : last, last, selected);
}

void ListState::SetCurrent(int32_t row) {
  if (row < 0 || row >= count_) return;
  current_ = anchor_ = row;
  Show(row);
}

bool ListState::Go(int32_t row, bool shift, bool control) {
  const RowSet before = selected_;
  const int32_t previous = current_;
  current_ = row;
  if (!multiple || (!shift && !control)) {
    selected_.Clear();
    selected_.Set(row, row, true);
  } else if (shift) {
    if (!control) selected_.Clear();
    selected_.Set(anchor_ < 0 ? row : anchor_, row, true);
  }
  if (!shift || anchor_ < 0) anchor_ = row;
  Show(row);
  return previous != current_ || !(before.Runs() == selected_.Runs());
}

bool ListState::Click(int32_t row, bool shift, bool control) {
  if (row < 0 || row >= count_) return false;
  if (!multiple || !control || shift) return Go(row, shift, control);
  current_ = anchor_ = row;
  selected_.Set(row, row, !selected_.Contains(row));
  return true;
}

bool ListState::Press(ListKey key, bool shift, bool control) {
  if (count_ == 0) return false;
  const int32_t page = std::max(RowsInView() - 1, 1);
  int64_t row = current_;
  switch (key) {
    case ListKey::kUp:
      row -= 1;
      break;
    case ListKey::kDown:
      row += 1;
      break;
    case ListKey::kPageUp:
      row -= page;
      break;
    case ListKey::kPageDown:
      row += page;
      break;
    case ListKey::kHome:
      row = 0;
      break;
    case ListKey::kEnd:
      row = count_ - 1;
      break;
  }
  return Go(static_cast<int32_t>(std::clamp<int64_t>(row, 0, count_ - 1)), shift, control);
}

bool ListState::Space(bool control) {
  if (current_ < 0) return false;
  if (multiple && control) return Click(current_, false, true);
  const bool wasSelected = selected_.Contains(current_);
  selected_.Set(current_, current_, true);
  return !wasSelected;
}

std::vector<int32_t> OrderAfterDrag(int32_t count, std::span<const int32_t> rows, int32_t before) {
  RowSet moved;
  for (const int32_t row : rows) moved.Set(row, row, true);
  std::vector<int32_t> order;
  order.reserve(static_cast<std::size_t>(std::max(count, 0)));
  for (int32_t i = 0; i <= count; ++i) {
    if (i == before) order.insert(order.end(), rows.begin(), rows.end());
    if (i < count && !moved.Contains(i)) order.push_back(i);
  }
  return order;
}

int32_t GapOfStep(int32_t count, std::span<const int32_t> rows, int32_t step) {
  if (rows.empty()) return -1;
  const bool isBlock = rows.back() - rows.front() + 1 == static_cast<int32_t>(rows.size());
  if (step < 0) return rows.front() > 0 ? rows.front() - 1 : isBlock ? -1 : 0;
  return rows.back() + 1 < count ? rows.back() + 2 : isBlock ? -1 : count;
}

void ExchangeState::Reset(int32_t count) {
  count_ = std::max(count, 0);
  chosen_.clear();
  available_.resize(static_cast<std::size_t>(count_));
  std::iota(available_.begin(), available_.end(), 0);
}

void ExchangeState::Choose(std::span<const int32_t> rows, int32_t gap) {
  std::vector<int32_t> entries;
  for (const int32_t row : rows) {
    if (row >= 0 && row < static_cast<int32_t>(available_.size()))
      entries.push_back(available_[static_cast<std::size_t>(row)]);
  }
  gap = std::clamp(gap, 0, static_cast<int32_t>(chosen_.size()));
  std::vector<int32_t> chosen = chosen_;
  chosen.insert(chosen.begin() + gap, entries.begin(), entries.end());
  SetChosen(chosen);
}

void ExchangeState::Return(std::span<const int32_t> rows) {
  std::vector<int32_t> kept;
  for (std::size_t i = 0; i < chosen_.size(); ++i) {
    if (std::ranges::find(rows, static_cast<int32_t>(i)) == rows.end()) kept.push_back(chosen_[i]);
  }
  SetChosen(kept);
}

void ExchangeState::Reorder(std::span<const int32_t> rows, int32_t gap) {
  std::vector<int32_t> chosen;
  for (const int32_t old : OrderAfterDrag(static_cast<int32_t>(chosen_.size()), rows, gap)) {
    chosen.push_back(chosen_[static_cast<std::size_t>(old)]);
  }
  chosen_ = std::move(chosen);
}

bool ExchangeState::SetChosen(std::span<const int32_t> entries) {
  std::vector<bool> isChosen(static_cast<std::size_t>(count_));
  for (const int32_t entry : entries) {
    if (entry < 0 || entry >= count_ || isChosen[static_cast<std::size_t>(entry)]) return false;
    isChosen[static_cast<std::size_t>(entry)] = true;
  }
  chosen_.assign(entries.begin(), entries.end());
  available_.clear();
  for (int32_t entry = 0; entry < count_; ++entry) {
    if (!isChosen[static_cast<std::size_t>(entry)]) available_.push_back(entry);
  }
  return true;
}

}  // namespace vrx::controls
