// A tree without a window: its nodes, which of them are visible, and the list that the visible ones make.

#ifndef CONTROLS_LAYOUT_TREE_MODEL_H_
#define CONTROLS_LAYOUT_TREE_MODEL_H_

#include <cstdint>
#include <vector>

#include <vrxmath/platform/wide_string.h>

namespace vrx::controls {

/// Nodes are numbered in the order of addition and keep their numbers; a node stands behind its parent's earlier children.
class TreeModel {
 public:
  static constexpr int32_t kRoot = -1;  ///< the parent of the nodes of the first level

  struct Node {
    CString text;
    uint32_t data = 0;
    int32_t parent = kRoot;
    int32_t level = 0;
    bool expanded = false;
    bool selected = false;
    std::vector<int32_t> children;
  };

  void Clear();
  /// Adds a node and returns its number; -1 for a parent that does not exist.
  int32_t Add(int32_t parent, WideView text, uint32_t data);
  [[nodiscard]] bool Has(int32_t node) const {
    return node >= 0 && node < static_cast<int32_t>(nodes_.size());
  }
  [[nodiscard]] const Node& At(int32_t node) const { return nodes_[static_cast<std::size_t>(node)]; }
  [[nodiscard]] int32_t Count() const { return static_cast<int32_t>(nodes_.size()); }
  /// False when nothing changed: for a node that does not exist, has no children, or is so already.
  bool Expand(int32_t node, bool expanded);
  void SetSelected(int32_t node, bool selected);

  /// The visible nodes from top to bottom. Valid until the next change.
  [[nodiscard]] const std::vector<int32_t>& Rows();
  /// The row of a node; -1 when it is hidden in a node that is not expanded.
  [[nodiscard]] int32_t RowOf(int32_t node);

 private:
  std::vector<Node> nodes_;
  std::vector<int32_t> roots_;
  std::vector<int32_t> rows_;
  bool areRowsCurrent_ = true;
};

}  // namespace vrx::controls

#endif  // CONTROLS_LAYOUT_TREE_MODEL_H_
