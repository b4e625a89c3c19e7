#include "editing/GradCurvesParameters.h"

#include <algorithm>
#include <deque>
#include <string>
#include <vector>

#include "base/Arithmetic.h"

namespace {

using P = GradCurvesParameters;
using Row = ParameterRow<P>;

struct CurveName {
  char letter;
  const char* count;
  const char* x;
  const char* y;
};
constexpr CurveName kNames[P::kCurves] = {
    {'L', "number of nodes on the luminance curve", "a node of the luminance curve: level before",
     "a node of the luminance curve: level after"},
    {'R', "number of nodes on the red curve", "a node of the red curve: level before",
     "a node of the red curve: level after"},
    {'G', "number of nodes on the green curve", "a node of the green curve: level before",
     "a node of the green curve: level after"},
    {'B', "number of nodes on the blue curve", "a node of the blue curve: level before",
     "a node of the blue curve: level after"}};

const editing::CurveNode& NodeAt(const P& parameters, int number) {
  return parameters.curves[number / P::kNodes].nodes[number % P::kNodes];
}
const std::int32_t& CountAt(const P& parameters, int number) {
  return parameters.curves[number].count;
}
const std::int32_t& XAt(const P& parameters, int number) {
  return NodeAt(parameters, number).x;
}
const std::int32_t& YAt(const P& parameters, int number) {
  return NodeAt(parameters, number).y;
}

int LimitLevel(int text) {
  return base::ClampByte(text);
}

// The rows, and the keys and pieces of text that they point to.
class Table {
 public:
  Table() {
    for (int k = 0; k < P::kCurves; ++k) {
      Add(std::string("n") + kNames[k].letter, "%.2d", {CountAt, k},
          {.least = 2, .greatest = P::kNodes, .gloss = kNames[k].count});
    }
    for (int i = 0; i < P::kCurves * P::kNodes; ++i) AddLevel('x', XAt, i, NameOf(i).x);
    for (int i = 0; i < P::kCurves * P::kNodes; ++i) AddLevel('y', YAt, i, NameOf(i).y);
    rows_.push_back({"Linear",
                     ", Linear=%.1d",
                     &P::linear,
                     {.greatest = 1, .gloss = "straight lines in place of splines"}});
    rows_.push_back({"YIQOn",
                     ", YIQOn=%.1d",
                     &P::yiqOn,
                     {.greatest = 1, .gloss = "the luminance curve keeps the colours"}});
    rows_.push_back({"FilterOn",
                     ", FilterOn=%.1d",
                     &P::filterOn,
                     {.greatest = 1, .gloss = "without it the picture passes unchanged"}});
  }
  std::span<const Row> Rows() const { return rows_; }

 private:
  static const CurveName& NameOf(int number) { return kNames[number / P::kNodes]; }

  void AddLevel(char axis, const std::int32_t& (*of)(const P&, int), int number,
                const char* gloss) {
    std::string key = {axis, NameOf(number).letter};
    key += std::to_string(number % P::kNodes + 1);
    Add(key, "%.3d", {of, number}, {.greatest = 255, .gloss = gloss, .stored = LimitLevel});
  }

  void Add(const std::string& key, const char* format, Row::Numbered member,
           ParameterDescription more) {
    const char* const separator = rows_.empty() ? "" : ", ";
    pieces_.push_back(key);
    const char* const ownKey = pieces_.back().c_str();
    pieces_.push_back(separator + key + "=" + format);
    rows_.emplace_back(ownKey, pieces_.back().c_str(), member, more);
  }

  std::deque<std::string> pieces_;  // which stay where they are
  std::vector<Row> rows_;
};

}  // namespace

GradCurvesParameters::Curve::Curve() {
  std::fill(std::begin(nodes), std::end(nodes), editing::CurveNode{255, 255});
  nodes[0] = {0, 0};
}

GradCurvesParameters GradCurvesParameters::ActiveStart() {
  GradCurvesParameters start;
  for (Curve& curve : start.curves) curve.count = 3;
  start.linear = start.yiqOn = start.filterOn = true;
  return start;
}

std::span<const Row> GradCurvesParameters::Rows() {
  static const Table table;
  return table.Rows();
}
