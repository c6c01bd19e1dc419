#include "report/FormulaParser.h"

#include <cstdlib>

#include "platform/Ascii.h"

namespace varnlog::report {

namespace {

using Node = Formula::Node;
using NodePtr = std::unique_ptr<const Node>;

// Formula texts are ours and short; the bound only keeps a spoilt design file from exhausting the stack.
constexpr int kMaxDepth = 64;

using platform::ascii::IsDigit;
using platform::ascii::IsLetter;

std::string Lowered(std::string_view word) {
  std::string lowered(word);
  for (char& c : lowered) c = platform::ascii::Lower(c);
  return lowered;
}

class Parser {
 public:
  explicit Parser(std::string_view text) : text_(text) {}

  NodePtr Whole() {
    NodePtr node = Expression();
    SkipBlanks();
    if (at_ < text_.size()) FailFormula(Place(), "nothing more was expected");
    return node;
  }

 private:
  [[nodiscard]] std::size_t Place() const { return at_ + 1; }

  void SkipBlanks() {
    while (at_ < text_.size() && platform::ascii::IsBlank(text_[at_])) ++at_;
  }

  [[nodiscard]] char Peek() {
    SkipBlanks();
    return at_ < text_.size() ? text_[at_] : '\0';
  }

  bool Take(char c) {
    if (Peek() != c) return false;
    ++at_;
    return true;
  }

  void Expect(char c) {
    if (!Take(c)) FailFormula(Place(), std::string("'") + c + "' expected");
  }

  /// The word at the current place, lower-case; empty when there is none.
  [[nodiscard]] std::string PeekWord() {
    SkipBlanks();
    std::size_t end = at_;
    while (end < text_.size() && IsLetter(text_[end])) ++end;
    return Lowered(text_.substr(at_, end - at_));
  }

  bool TakeWord(std::string_view word) {
    if (PeekWord() != word) return false;
    at_ += word.size();
    return true;
  }

  void ExpectWord(std::string_view word) {
    if (!TakeWord(word)) FailFormula(Place(), "'" + std::string(word) + "' expected");
  }

  static std::unique_ptr<Node> Make(Node::Kind kind, std::size_t place) {
    auto node = std::make_unique<Node>();
    node->kind = kind;
    node->place = place;
    return node;
  }

  NodePtr Expression() {
    if (++depth_ > kMaxDepth) FailFormula(Place(), "the formula is nested too deeply");
    SkipBlanks();
    const std::size_t place = Place();
    NodePtr result;
    if (TakeWord("if")) {
      auto node = Make(Node::Kind::kIf, place);
      node->children.push_back(Sum());
      Expect('=');
      node->children.push_back(Sum());
      ExpectWord("then");
      node->children.push_back(Expression());
      ExpectWord("else");
      node->children.push_back(Expression());
      result = std::move(node);
    } else {
      result = Sum();
    }
    --depth_;
    return result;
  }

  NodePtr Sum() {
    NodePtr first = Single();
    if (Peek() != '+') return first;
    auto node = Make(Node::Kind::kSum, Place());
    node->children.push_back(std::move(first));
    while (Take('+')) node->children.push_back(Single());
    return node;
  }

  NodePtr Single() {
    const char c = Peek();
    const std::size_t place = Place();
    if (c == '"') return TextConstant();
    if (c == '{') return FieldReference(Node::Kind::kField);
    if (IsDigit(c)) return NumberConstant();
    if (Take('(')) {
      NodePtr inner = Expression();
      Expect(')');
      return inner;
    }
    if (TakeWord("totext")) return ToText(place);
    if (TakeWord("count")) {
      Expect('(');
      NodePtr count = FieldReference(Node::Kind::kCount);
      Expect(')');
      return count;
    }
    return SpecialField(place);
  }

  NodePtr SpecialField(std::size_t place) {
    if (TakeWord("pagenumber")) return Make(Node::Kind::kPageNumber, place);
    if (TakeWord("totalpagecount")) return Make(Node::Kind::kTotalPageCount, place);
    if (TakeWord("recordnumber")) return Make(Node::Kind::kRecordNumber, place);
    if (TakeWord("printdate")) return Make(Node::Kind::kPrintDate, place);
    const std::string word = PeekWord();
    FailFormula(place, word.empty() ? "a value was expected" : "'" + word + "' is not known");
  }

  NodePtr ToText(std::size_t place) {
    auto node = Make(Node::Kind::kToText, place);
    Expect('(');
    node->children.push_back(Expression());
    if (Take(',')) node->children.push_back(Expression());
    Expect(')');
    return node;
  }

  NodePtr TextConstant() {
    auto node = Make(Node::Kind::kConstant, Place());
    std::string value;
    for (++at_; at_ < text_.size(); ++at_) {
      if (text_[at_] == '"') {
        const bool doubled = at_ + 1 < text_.size() && text_[at_ + 1] == '"';
        if (!doubled) {
          ++at_;
          node->constant = std::move(value);
          return node;
        }
        ++at_;
      }
      value += text_[at_];
    }
    FailFormula(node->place, "the text is not closed");
  }

  NodePtr NumberConstant() {
    auto node = Make(Node::Kind::kConstant, Place());
    double value = 0;
    for (; at_ < text_.size() && IsDigit(text_[at_]); ++at_) value = value * 10 + (text_[at_] - '0');
    node->constant = value;
    return node;
  }

  NodePtr FieldReference(Node::Kind kind) {
    constexpr std::string_view kSource = "dao.";
    auto node = Make(kind, Place());
    Expect('{');
    const std::size_t end = text_.find('}', at_);
    if (end == std::string_view::npos) FailFormula(node->place, "the field reference is not closed");
    const std::string_view name = text_.substr(at_, end - at_);
    if (name.substr(0, kSource.size()) != kSource) FailFormula(node->place, "fields are written {dao.NAME}");
    node->field = name.substr(kSource.size());
    at_ = end + 1;
    return node;
  }

  std::string_view text_;
  std::size_t at_ = 0;
  int depth_ = 0;
};

}  // namespace

NodePtr ParseFormula(std::string_view text) {
  return Parser(text).Whole();
}

void FailFormula(std::size_t place, std::string_view what) {
  throw FormulaError("character " + std::to_string(place) + ": " + std::string(what));
}

}  // namespace varnlog::report
