#include "host/runtime/classes/declaration.h"

#include "host/runtime/support/errors.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>

namespace host {

namespace {

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// Reads a declaration from its start, one word or punctuation mark at a time.
class Reader {
public:
    explicit Reader(std::string_view text) : text_(text) { skipSpace(); }

    [[noreturn]] void fail(std::string_view expected) const
    {
        const std::string found =
            atEnd() ? std::string("the end") : fmt::format("'{}'", text_.substr(position_, 12));
        throw ProgramError(fmt::format("declaration \"{}\": expected {} at character {}, found {}", text_,
                                       expected, position_ + 1, found));
    }

    bool atEnd() const { return position_ == text_.size(); }

    bool take(char mark)
    {
        if (atEnd() || text_[position_] != mark) return false;
        ++position_;
        skipSpace();
        return true;
    }

    void need(char mark)
    {
        if (!take(mark)) fail(fmt::format("'{}'", mark));
    }

    /// Return the word at the current position and keep the position; empty if no word starts there.
    std::string_view peekWord() const
    {
        std::size_t end = position_;
        if (end < text_.size() && isLetter(text_[end])) {
            while (end < text_.size() && (isLetter(text_[end]) || isDigit(text_[end]) || text_[end] == '.'))
                ++end;
        }
        return text_.substr(position_, end - position_);
    }

    bool takeWord(std::string_view word)
    {
        if (!sameName(peekWord(), word)) return false;
        position_ += word.size();
        skipSpace();
        return true;
    }

    std::string needWord(std::string_view expected)
    {
        const std::string_view word = peekWord();
        if (word.empty()) fail(expected);
        position_ += word.size();
        skipSpace();
        return std::string(word);
    }

    /// Skip the "()" that marks an array. Returns false, with the position unchanged, if there is no "()".
    bool takeArrayMark()
    {
        const std::size_t start = position_;
        if (take('(') && take(')')) return true;
        position_ = start;
        return false;
    }

    Type needType()
    {
        Type type = typeNamed(needWord("a type"));
        type.isArray = takeArrayMark();
        return type;
    }

    Literal needLiteral()
    {
        if (take('"')) return quoted();
        if (takeWord("true")) return true;
        if (takeWord("false")) return false;
        if (takeWord("nil")) return std::monostate();
        return number();
    }

    void needEnd()
    {
        if (!atEnd()) fail("the end");
    }

private:
    void skipSpace()
    {
        while (position_ < text_.size() && (text_[position_] == ' ' || text_[position_] == '\t')) ++position_;
    }

    /// Read a quoted text after the opening quote mark. Two quote marks in the text stand for one.
    Literal quoted()
    {
        while (text_[position_ - 1] != '"') --position_; // take() skipped spaces that belong to the text
        std::string value;
        for (; !atEnd(); ++position_) {
            if (text_[position_] != '"') {
                value.push_back(text_[position_]);
            } else if (position_ + 1 < text_.size() && text_[position_ + 1] == '"') {
                value.push_back('"');
                ++position_;
            } else {
                ++position_;
                skipSpace();
                return value;
            }
        }
        fail("a closing quote");
    }

    Literal number()
    {
        const std::string rest(text_.substr(position_));
        const bool isHex = rest.size() > 2 && rest[0] == '&' && (rest[1] == 'h' || rest[1] == 'H');
        const std::size_t start = rest.find_first_not_of("+-");
        const bool isNumber =
            !isHex && start != rest.npos && start <= 1 && (isDigit(rest[start]) || rest[start] == '.');
        if (!isHex && !isNumber) fail("a value");
        const char* begin = rest.c_str() + (isHex ? 2 : 0);
        char* wholeEnd = nullptr;
        char* floatEnd = nullptr;
        const auto whole = isHex ? static_cast<long long>(std::strtoull(begin, &wholeEnd, 16))
                                 : std::strtoll(begin, &wholeEnd, 10);
        const double floating = isHex ? 0 : std::strtod(begin, &floatEnd);
        const bool isFloating = !isHex && floatEnd > wholeEnd;
        const char* end = isFloating ? floatEnd : wholeEnd;
        if (end == begin) fail("a value");
        position_ += static_cast<std::size_t>(end - rest.c_str());
        skipSpace();
        if (isFloating) return floating;
        return static_cast<std::int64_t>(whole);
    }

    std::string_view text_;
    std::size_t position_ = 0;
};

Parameter parseParameter(Reader& reader)
{
    Parameter parameter;
    for (;;) {
        if (reader.takeWord("byref"))
            parameter.isByRef = true;
        else if (reader.takeWord("assigns"))
            parameter.isAssigned = true;
        else if (!reader.takeWord("byval"))
            break;
    }
    parameter.name = reader.needWord("a parameter's name");
    const bool isArray = reader.takeArrayMark();
    if (!reader.takeWord("as")) reader.fail("'as'");
    parameter.type = reader.needType();
    parameter.type.isArray |= isArray;
    if (reader.take('=')) parameter.defaultValue = reader.needLiteral();
    return parameter;
}

} // namespace

std::size_t requiredCount(const std::vector<Parameter>& parameters)
{
    std::size_t count = 0;
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        if (!parameters[i].defaultValue) count = i + 1;
    }
    return count;
}

Declaration parseDeclaration(std::string_view text)
{
    Reader reader(text);
    Declaration declaration;
    declaration.name = reader.needWord("a name");
    if (reader.take('(') && !reader.take(')')) {
        do declaration.parameters.push_back(parseParameter(reader));
        while (reader.take(','));
        reader.need(')');
    }
    if (reader.takeWord("as")) declaration.result = reader.needType();
    reader.needEnd();
    return declaration;
}

ConstantDeclaration parseConstant(std::string_view text)
{
    Reader reader(text);
    ConstantDeclaration constant;
    constant.name = reader.needWord("a name");
    if (reader.takeWord("as")) constant.type = reader.needType();
    reader.need('=');
    constant.value = reader.needLiteral();
    reader.needEnd();
    return constant;
}

bool sameSignature(const Declaration& left, const Declaration& right)
{
    const auto agree = [](const Parameter& a, const Parameter& b) {
        return a.type == b.type && a.isByRef == b.isByRef && a.isAssigned == b.isAssigned;
    };
    return sameName(left.name, right.name) && left.result == right.result &&
           std::equal(left.parameters.begin(), left.parameters.end(), right.parameters.begin(),
                      right.parameters.end(), agree);
}

std::string print(const Literal& literal)
{
    if (std::holds_alternative<bool>(literal)) return std::get<bool>(literal) ? "true" : "false";
    if (const auto* whole = std::get_if<std::int64_t>(&literal)) return fmt::format("{}", *whole);
    if (const auto* floating = std::get_if<double>(&literal)) return fmt::format("{:#}", *floating);
    const auto* quoted = std::get_if<std::string>(&literal);
    if (!quoted) return "nil";
    std::string text = "\"";
    for (char c : *quoted) text += c == '"' ? std::string("\"\"") : std::string(1, c);
    return text + "\"";
}

std::string print(const Declaration& declaration)
{
    std::string text = declaration.name;
    if (!declaration.parameters.empty()) {
        text += "(";
        for (const auto& parameter : declaration.parameters) {
            if (text.back() != '(') text += ", ";
            if (parameter.isByRef) text += "ByRef ";
            if (parameter.isAssigned) text += "Assigns ";
            Type element = parameter.type;
            element.isArray = false;
            text += parameter.name + (parameter.type.isArray ? "()" : "") + " As " + typeName(element);
            if (parameter.defaultValue) text += " = " + print(*parameter.defaultValue);
        }
        text += ")";
    }
    if (!declaration.result.isVoid()) text += " As " + typeName(declaration.result);
    return text;
}

} // namespace host
