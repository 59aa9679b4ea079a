#include "controls/layout/tree_model.h"

#include <algorithm>
#include <utility>

namespace vrx::controls {

void TreeModel::Clear() {
  nodes_.clear();
  roots_.clear();
  rows_.clear();
  areRowsCurrent_ = true;
}

int32_t TreeModel::Add(int32_t parent, WideView text, uint32_t data) {
  if (parent != kRoot && !Has(parent)) return -1;
  const int32_t number = Count();
  Node node;
  node.text = text;
  node.data = data;
  node.parent = parent;
  node.level = parent == kRoot ? 0 : At(parent).level + 1;
  nodes_.push_back(std::move(node));
  (parent == kRoot ? roots_ : nodes_[static_cast<std::size_t>(parent)].children).push_back(number);
  areRowsCurrent_ = false;
  return number;
}

bool TreeModel::Expand(int32_t node, bool expanded) {
  if (!Has(node)) return false;
  Node& target = nodes_[static_cast<std::size_t>(node)];
  if (target.children.empty() || target.expanded == expanded) return false;
  target.expanded = expanded;
  areRowsCurrent_ = false;
  return true;
}

void TreeModel::SetSelected(int32_t node, bool selected) {
  if (Has(node)) nodes_[static_cast<std::size_t>(node)].selected = selected;
}

const std::vector<int32_t>& TreeModel::Rows() {
  if (areRowsCurrent_) return rows_;
  rows_.clear();
  std::vector<int32_t> pending(roots_.rbegin(), roots_.rend());
  while (!pending.empty()) {
    const int32_t node = pending.back();
    pending.pop_back();
    rows_.push_back(node);
    if (!At(node).expanded) continue;
    const std::vector<int32_t>& children = At(node).children;
    pending.insert(pending.end(), children.rbegin(), children.rend());
  }
  areRowsCurrent_ = true;
  return rows_;
}

int32_t TreeModel::RowOf(int32_t node) {
  const auto row = std::ranges::find(Rows(), node);
  return row == rows_.end() ? -1 : static_cast<int32_t>(row - rows_.begin());
}

}  // namespace vrx::controls
