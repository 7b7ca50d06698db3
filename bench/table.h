#ifndef BENCH_TABLE_H_
#define BENCH_TABLE_H_

#include <array>
#include <functional>
#include <memory>
#include <string>

/// One way of doing some work, and what is done each time before it without being measured.
struct Side {
  std::function<void()> work;
  std::function<void()> prepare = nullptr;
};

/// Two ways of doing the same work on so many items.
struct Pair {
  int items;
  Side library;
  Side alternative;
  Side process = {};  ///< the library in a process of its own, when that is of interest
  std::shared_ptr<void> needed = nullptr;  ///< what must live meanwhile
};

/// A line of the table. Its work is measured at three sizes.
struct Line {
  std::string library;
  std::string alternative;
  std::string items;
  double goal;               ///< the highest ratio that is good enough; 0 for none
  std::array<int, 3> sizes;  ///< the last is that of the goal
  std::function<Pair(int)> make;
};

/// The table's head, in Markdown.
std::string TableHead();

/// Measures a line of the table.
std::string TableRow(const Line& line);

#endif  // BENCH_TABLE_H_
