#include "tests/endtoend/documentation/basic_checker.h"

#include <algorithm>
#include <cctype>
#include <sstream>
#include <stdexcept>

namespace endtoend {

namespace {

using host::Base;
using host::Declaration;
using host::Type;

struct HostMember {
    const char* owner; ///< class of the host; empty for a function
    const char* declaration;
    bool isAssignable;
};

// The functions and members of the host that the documentation uses.
const HostMember hostMembers[] = {
    {"", "MsgBox(message as String)", false},
    {"", "Str(value as Double) as String", false},
    {"", "Format(value as Double, spec as String) as String", false},
    {"", "Sin(angle as Double) as Double", false},
    {"", "Ubound(values as Variant) as Integer", false},
    {"", "GetFolderItem(path as String) as FolderItem", false},
    {"", "GetOpenFolderItem(filter as String) as FolderItem", false},
    {"App", "DoEvents(milliseconds as Integer = 0)", false},
    {"Dictionary", "Count as Integer", false},
    {"Dictionary", "Key(index as Integer) as Variant", false},
    {"Dictionary", "Value(key as Variant) as Variant", true},
    {"FolderItem", "Name as String", true},
    {"MemoryBlock", "Constructor(size as Integer)", false},
    {"MemoryBlock", "DoubleValue(offset as Integer) as Double", true},
    {"MemoryBlock", "Int16Value(offset as Integer) as Integer", true},
    {"MemoryBlock", "SingleValue(offset as Integer) as Double", true},
    {"MemoryBlock", "Size as Integer", true},
    {"MemoryBlock", "UInt32Value(offset as Integer) as UInt32", true},
    {"RuntimeException", "Message as String", true},
    {"Variant", "StringValue as String", false},
    {"Variant", "IntegerValue as Integer", false},
};

std::string lowered(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
    return text;
}

[[noreturn]] void fail(const std::string& reason) { throw std::runtime_error(reason); }

enum class TokenKind { name, number, text, symbol, end };

struct Token {
    TokenKind kind = TokenKind::end;
    std::string text;
};

std::vector<Token> tokensOf(const std::string& line)
{
    std::vector<Token> tokens;
    const auto isWord = [&](std::size_t i) {
        return i < line.size() && (std::isalnum(static_cast<unsigned char>(line[i])) || line[i] == '_');
    };
    for (std::size_t i = 0; i < line.size();) {
        const std::size_t start = i;
        const char first = line[i];
        if (first == ' ') {
            ++i;
        } else if (first == '\'' || line.compare(i, 2, "//") == 0) {
            break;
        } else if (first == '"') {
            const std::size_t close = line.find('"', i + 1);
            if (close == line.npos) fail("a text has no closing quotation mark");
            i = close + 1;
            tokens.push_back({TokenKind::text, line.substr(start, i - start)});
        } else if (std::isdigit(static_cast<unsigned char>(first)) || line.compare(i, 2, "&h") == 0) {
            ++i;
            while (isWord(i) || (i < line.size() && line[i] == '.')) ++i;
            tokens.push_back({TokenKind::number, line.substr(start, i - start)});
        } else if (isWord(i)) {
            while (isWord(i)) ++i;
            tokens.push_back({TokenKind::name, line.substr(start, i - start)});
        } else {
            static const std::string pairs[] = {"<=", ">=", "<>"};
            const bool isPair = std::count(std::begin(pairs), std::end(pairs), line.substr(i, 2)) > 0;
            i += isPair ? 2 : 1;
            tokens.push_back({TokenKind::symbol, line.substr(start, i - start)});
        }
    }
    return tokens;
}

enum class Form {
    value,      ///< a result that cannot be assigned
    assignable, ///< a variable, an array element, a writable property
    property,   ///< a property that is read-only
    call,       ///< a method
};

struct Operand {
    Type type;
    Form form = Form::value;
    bool isNil = false;
    bool isVariable = false;
};

bool fits(const Type& type, const Operand& operand)
{
    if (operand.isNil) return type.isReference() && (type.isArray || type.base != Base::string);
    if (type.base == Base::variant && !type.isArray) return !operand.type.isVoid();
    if (operand.type.base == Base::variant && !operand.type.isArray) return !type.isArray;
    return type == operand.type || (type.isNumber() && operand.type.isNumber());
}

bool fitsParameter(const host::Parameter& parameter, const Operand& argument)
{
    if (parameter.isByRef) return argument.isVariable && argument.type == parameter.type;
    return fits(parameter.type, argument);
}

/// A member that a name may mean. Overloads have the same name.
struct Candidate {
    Declaration declaration;
    bool isProperty = false;
    bool isAssignable = false;
    std::string key; ///< "CLASS.DECLARATION" for a member of a plug-in class
};

std::string listOf(const std::vector<Operand>& arguments)
{
    std::string text;
    for (const Operand& each : arguments)
        text += (text.empty() ? "" : ", ") + (each.isNil ? "Nil" : host::typeName(each.type));
    return "(" + text + ")";
}

bool takes(const Declaration& declaration, const std::vector<Operand>& arguments, bool isExact)
{
    const auto& parameters = declaration.parameters;
    if (arguments.size() > parameters.size() || arguments.size() < host::requiredCount(parameters))
        return false;
    for (std::size_t i = 0; i < arguments.size(); ++i)
        if (!fitsParameter(parameters[i], arguments[i]) ||
            (isExact && parameters[i].type != arguments[i].type))
            return false;
    return true;
}

/// Choose the candidate that takes the arguments; one with the arguments' own types comes first.
const Candidate& choose(const std::string& name, const std::vector<Candidate>& candidates,
                        const std::vector<Operand>& arguments)
{
    for (const bool isExact : {true, false})
        for (const Candidate& each : candidates)
            if (takes(each.declaration, arguments, isExact)) return each;
    fail(candidates.empty() ? "there is no member or function " + name
                            : name + " does not take " + listOf(arguments) + "; declared is " +
                                  host::print(candidates.front().declaration));
}

std::vector<Candidate> membersOf(const host::ClassInfo& info, const std::string& name)
{
    std::vector<Candidate> found;
    const std::string prefix = info.name + ".";
    if (const host::PropertyInfo* property = info.property(name))
        found.push_back(
            {{property->name, {}, property->type}, true, !property->isReadOnly(), prefix + property->name});
    for (const host::MethodInfo* method : info.methodsNamed(name))
        found.push_back({method->declaration, method->setter != nullptr, method->setter != nullptr,
                         prefix + method->text});
    return found;
}

std::vector<Candidate> sharedMembersOf(const host::ClassInfo& info, const std::string& name)
{
    std::vector<Candidate> found;
    const std::string prefix = info.name + ".";
    for (const host::MethodInfo* method : info.sharedMethodsNamed(name))
        found.push_back({method->declaration, false, false, prefix + method->text});
    if (const host::ConstantInfo* constant = info.constant(name))
        found.push_back(
            {{constant->name, {}, host::typeNamed("Integer")}, true, false, prefix + constant->text});
    return found;
}

std::vector<Candidate> hostMembersOf(const std::string& owner, const std::string& name)
{
    std::vector<Candidate> found;
    for (const HostMember& each : hostMembers) {
        const Declaration declaration = host::parseDeclaration(each.declaration);
        if (host::sameName(each.owner, owner) && host::sameName(declaration.name, name))
            found.push_back({declaration, each.isAssignable, each.isAssignable, ""});
    }
    return found;
}

} // namespace

/// One line of a program.
class BasicLine {
public:
    BasicLine(BasicChecker& checker, const std::string& line) : checker_(checker), tokens_(tokensOf(line)) {}

    void check()
    {
        if (isAtEnd()) return;
        statement();
        if (!isAtEnd()) fail("unexpected \"" + peek() + "\"");
    }

private:
    bool isAtEnd() const { return next_ == tokens_.size(); }
    std::string peek() const { return isAtEnd() ? "end of line" : tokens_[next_].text; }
    bool isNext(const std::string& text) const { return !isAtEnd() && host::sameName(peek(), text); }
    bool accept(const std::string& text)
    {
        const bool isFound = isNext(text);
        next_ += isFound;
        return isFound;
    }
    void expect(const std::string& text)
    {
        if (!accept(text)) fail("expected \"" + text + "\", found \"" + peek() + "\"");
    }
    std::string name()
    {
        if (isAtEnd() || tokens_[next_].kind != TokenKind::name) fail("expected a name, found " + peek());
        return tokens_[next_++].text;
    }

    // ---- statements ----

    void statement()
    {
        if (accept("Dim")) return declare();
        if (accept("If") || accept("ElseIf")) {
            condition();
            expect("Then");
            if (!isAtEnd()) statement();
            return;
        }
        if (accept("While")) return condition();
        if (accept("Loop")) {
            if (accept("Until")) condition();
            return;
        }
        if (accept("For")) return loop();
        if (accept("Class")) {
            checker_.currentClass_ = lowered(name());
            return;
        }
        if (accept("Inherits")) {
            checker_.bases_[checker_.currentClass_] = name();
            return;
        }
        if (accept("Sub")) return handler();
        if (accept("Catch")) return variable(name(), false);
        if (accept("End")) {
            if (accept("Class")) checker_.currentClass_.clear();
            if (!isAtEnd()) name();
            return;
        }
        for (const char* const keyword : {"Else", "Wend", "Do", "Next", "Return", "Exit", "Try"})
            if (accept(keyword)) return;
        if (accept("Call")) {
            const Operand called = postfix();
            if (called.form != Form::call || called.type.isVoid()) fail("Call needs a method with a result");
            return;
        }
        const Operand target = postfix();
        if (accept("=")) {
            if (target.form != Form::assignable) fail("the left side of = cannot be assigned");
            const Operand value = expression();
            mustFit(target.type, value);
            if (value.isNil) release(target.type);
        } else if (target.form != Form::call || !target.type.isVoid()) {
            fail("a statement needs a method without a result, an assignment, or Call");
        }
    }

    void condition()
    {
        if (expression().type.base != Base::boolean) fail("a condition needs a Boolean");
    }

    void mustFit(const Type& type, const Operand& value)
    {
        if (!fits(type, value))
            fail(host::typeName(type) + " cannot hold " + (value.isNil ? "Nil" : host::typeName(value.type)));
    }

    /// The last reference to an object ends, and the host calls the method "Destructor" of its class.
    void release(const Type& type)
    {
        const host::ClassInfo* const info = host::findClass(type.className);
        if (!info) return;
        for (const Candidate& each : membersOf(*info, "Destructor")) use(each);
    }

    /// A class of the program counts as the plug-in class that it inherits.
    Type className()
    {
        const std::string text = name();
        const auto base = checker_.bases_.find(lowered(text));
        return host::typeNamed(base == checker_.bases_.end() ? text : base->second);
    }

    Type typeName()
    {
        Type type = className();
        type.isArray = accept("(");
        if (type.isArray) expect(")");
        return type;
    }

    void variable(const std::string& declared, bool isArray)
    {
        expect("As");
        Operand initial;
        bool hasInitial = false;
        Type type;
        if (isNext("New")) {
            initial = primary();
            type = initial.type;
        } else {
            type = typeName();
            hasInitial = accept("=");
            if (hasInitial) initial = expression();
        }
        type.isArray = type.isArray || isArray;
        if (hasInitial) mustFit(type, initial);
        checker_.variables_[lowered(declared)] = type;
    }

    void declare()
    {
        const std::string declared = name();
        const bool isArray = accept("(");
        if (isArray) {
            if (!isNext(")")) expression();
            expect(")");
        }
        variable(declared, isArray);
    }

    void loop()
    {
        const std::string counter = name();
        if (accept("As")) checker_.variables_[lowered(counter)] = typeName();
        expect("=");
        expression();
        expect("To");
        expression();
        if (accept("Step")) expression();
    }

    /// The handler of an event, in a subclass of a plug-in class.
    void handler()
    {
        const std::string event = name();
        expect("(");
        expect(")");
        const auto base = checker_.bases_.find(checker_.currentClass_);
        if (base == checker_.bases_.end()) return;
        const host::ClassInfo& info = host::classNamed(base->second);
        const host::EventInfo* const found = info.event(event);
        if (!found) fail(info.name + " has no event " + event);
        checker_.used_.insert(info.name + "." + found->text);
        checker_.variables_["self"] = host::typeNamed(info.name);
    }

    // ---- expressions ----

    Operand expression() { return binary(0); }

    /// An expression of operators of at least the level `least`.
    Operand binary(int least)
    {
        static const struct {
            const char* name;
            int level;
        } operators[] = {{"Or", 0}, {"And", 1}, {"=", 2},  {"<>", 2}, {"<", 2}, {">", 2},
                         {"<=", 2}, {">=", 2},  {"Is", 2}, {"+", 3},  {"-", 3}, {"&", 3},
                         {"*", 4},  {"/", 4},   {"\\", 4}, {"Mod", 4}};
        Operand left = accept("Not") ? negated() : postfix();
        for (bool isFound = true; isFound;) {
            isFound = false;
            for (const auto& each : operators) {
                if (each.level < least || !accept(each.name)) continue;
                left = combined(each.name, each.level, left, binary(each.level + 1));
                isFound = true;
                break;
            }
        }
        return left;
    }

    Operand negated()
    {
        const Operand value = binary(2);
        if (value.type.base != Base::boolean) fail("Not needs a Boolean");
        return value;
    }

    static Operand combined(const std::string& operation, int level, const Operand& left,
                            const Operand& right)
    {
        const Operand boolean = {host::typeNamed("Boolean")};
        const bool areNumbers = left.type.isNumber() && right.type.isNumber();
        const bool areTexts = left.type.base == Base::string && right.type.base == Base::string;
        if (level <= 1) {
            if (left.type.base != Base::boolean || right.type.base != Base::boolean)
                fail(operation + " needs two Booleans");
            return boolean;
        }
        if (level == 2) {
            if (!fits(left.type, right) && !fits(right.type, left)) fail(operation + " compares two types");
            return boolean;
        }
        if (areTexts && (operation == "+" || operation == "&")) return {left.type};
        if (!areNumbers) fail(operation + " needs two numbers");
        const bool isFraction = left.type.isFloating() || right.type.isFloating() || operation == "/";
        return {host::typeNamed(isFraction ? "Double" : "Integer")};
    }

    Operand postfix()
    {
        Operand value = primary();
        while (accept(".")) value = member(value.type, name());
        return value;
    }

    Operand primary()
    {
        if (accept("-")) {
            const Operand value = postfix();
            if (!value.type.isNumber()) fail("- needs a number");
            return {value.type};
        }
        if (accept("(")) {
            const Operand value = expression();
            expect(")");
            return {value.type, Form::value, value.isNil};
        }
        if (isAtEnd()) fail("expected an expression");
        const Token token = tokens_[next_++];
        if (token.kind == TokenKind::number)
            return {host::typeNamed(token.text.find('.') == token.text.npos ? "Integer" : "Double")};
        if (token.kind == TokenKind::text) return {host::typeNamed("String")};
        if (token.kind != TokenKind::name) fail("unexpected \"" + token.text + "\"");
        if (host::sameName(token.text, "True") || host::sameName(token.text, "False"))
            return {host::typeNamed("Boolean")};
        if (host::sameName(token.text, "Nil")) return {{}, Form::value, true};
        if (host::sameName(token.text, "New")) return created();
        return named(token.text);
    }

    Operand created()
    {
        const Type type = className();
        const std::vector<Operand> arguments = argumentList();
        const host::ClassInfo* const info = host::findClass(type.className);
        const std::vector<Candidate> constructors =
            info ? membersOf(*info, "Constructor") : hostMembersOf(host::typeName(type), "Constructor");
        if (!constructors.empty()) return use(choose("Constructor", constructors, arguments)), Operand{type};
        if (!arguments.empty()) fail(host::typeName(type) + " has no constructor with arguments");
        return {type};
    }

    Operand named(const std::string& text)
    {
        const auto found = checker_.variables_.find(lowered(text));
        if (found != checker_.variables_.end()) {
            Type type = found->second;
            if (!type.isArray || !accept("(")) return {type, Form::assignable, false, true};
            expression();
            expect(")");
            type.isArray = false;
            return {type, Form::assignable};
        }
        if (const host::ClassInfo* const info = host::findClass(text); info && accept(".")) {
            const std::string shared = name();
            return called(shared, sharedMembersOf(*info, shared));
        }
        if (host::sameName(text, "App") && accept(".")) {
            const std::string method = name();
            return called(method, hostMembersOf(text, method));
        }
        return called(text, hostMembersOf("", text));
    }

    Operand member(const Type& owner, const std::string& text)
    {
        const host::ClassInfo* const info = owner.isArray ? nullptr : host::findClass(owner.className);
        if (info && !info->isBuiltIn) return called(text, membersOf(*info, text));
        return called(text, hostMembersOf(host::typeName(owner), text));
    }

    Operand called(const std::string& text, const std::vector<Candidate>& candidates)
    {
        const Candidate& chosen = choose(text, candidates, argumentList());
        use(chosen);
        const Form form = chosen.isAssignable ? Form::assignable
                          : chosen.isProperty ? Form::property
                                              : Form::call;
        return {chosen.declaration.result, form};
    }

    void use(const Candidate& candidate)
    {
        if (!candidate.key.empty()) checker_.used_.insert(candidate.key);
    }

    std::vector<Operand> argumentList()
    {
        std::vector<Operand> arguments;
        if (!accept("(") || accept(")")) return arguments;
        do arguments.push_back(expression());
        while (accept(","));
        expect(")");
        return arguments;
    }

    BasicChecker& checker_;
    std::vector<Token> tokens_;
    std::size_t next_ = 0;
};

std::vector<std::string> BasicChecker::check(const std::string& program)
{
    std::vector<std::string> messages;
    std::istringstream stream(program);
    for (std::string line; std::getline(stream, line);) {
        try {
            BasicLine(*this, line).check();
        } catch (const std::exception& error) {
            messages.push_back(line + ": " + error.what());
        }
    }
    return messages;
}

} // namespace endtoend
