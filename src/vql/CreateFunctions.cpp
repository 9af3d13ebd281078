#include "vql/CreateFunctions.h"

#include "system/VQLException.h"
#include "vql/VQLFunction.h"
#include "vql/status.h"

namespace qve {

namespace {

using Type = CreateFunctions::Type;

constexpr VQLDataType I = VQLDataType::integer;
constexpr VQLDataType D = VQLDataType::double_;
constexpr VQLDataType B = VQLDataType::boolean;
constexpr VQLDataType S = VQLDataType::string;
constexpr VQLDataType Date = VQLDataType::date;
constexpr VQLDataType Time = VQLDataType::datetime;
constexpr VQLDataType Span = VQLDataType::duration;
constexpr VQLDataType Shape = VQLDataType::spatial;

constexpr VQLDataType anyType[] = {I, D, S, Date, Time, Span, B};
constexpr VQLDataType numbers[] = {I, D};

}  // namespace

void CreateFunctions::operator()() {
    CreateAggregates();
    CreateLogic();
    CreateArithmetic();
    CreateMath();
    CreateDates();
    CreateStrings();
    CreateConversions();
}

void CreateFunctions::Agg(Type returnType, const wchar_t* name, const wchar_t* op, Type argument1, Type argument2) {
    Insert(returnType, name, op, {argument1, argument2}, true);
}

void CreateFunctions::Func(Type returnType, const wchar_t* name, const wchar_t* op, Type argument1, Type argument2,
                           Type argument3) {
    Insert(returnType, name, op, {argument1, argument2, argument3}, false);
}

void CreateFunctions::Insert(Type returnType, const wchar_t* name, const wchar_t* op,
                             std::initializer_list<Type> arguments, bool isAggregate) {
    if (!returnType) throw VQLException(status::CreateFunctions_Insert, L"return type cannot be null");
    VQLFunctionTable::Types given;
    for (const Type& argument : arguments)
        if (argument) given.push_back(*argument);
    m_table.Insert(VQLFunction(*returnType, name, op, std::move(given), isAggregate));
}

void CreateFunctions::CreateAggregates() {
    Agg(I, L"count", L"countstar");
    for (const VQLDataType type : anyType) {
        Agg(I, L"count", L"count", type);
        Agg(I, L"countd", L"countd", type);
        Agg(type, L"max", L"max", type);
        Agg(type, L"min", L"min", type);
        Agg(type, L"any", L"any", type);
        Agg(type, L"anyif", L"anyif", type, B);
    }
    for (const VQLDataType type : {I, D, Span}) {
        Agg(type, L"sum", L"sum", type);
        Agg(type, L"total", L"total", type);
    }
    for (const VQLDataType fraction : numbers) {
        for (const VQLDataType type : numbers) Agg(D, L"quantile", L"quantile", type, fraction);
        for (const VQLDataType type : {Date, Time}) Agg(Time, L"quantile", L"quantile", type, fraction);
    }
    Agg(Span, L"quantile", L"quantile", Span, D);
    for (const wchar_t* name : {L"var", L"varp"}) Agg(D, name, name, D);
    for (const wchar_t* name : {L"corr", L"covar", L"covarp"}) Agg(D, name, name, D, D);
    for (const wchar_t* name : {L"collect", L"collectd"}) Agg(Shape, name, name, Shape);
}

void CreateFunctions::CreateLogic() {
    constexpr const wchar_t* comparisons[][2] = {{L"=", L"eq"},  {L">", L"gt"},  {L"<", L"lt"},
                                                 {L">=", L"ge"}, {L"<=", L"le"}, {L"<>", L"ne"}};
    for (const auto& [name, op] : comparisons) {
        for (const VQLDataType type : anyType) Func(B, name, op, type, type);
        Func(B, name, op, Time, Span);
        Func(B, name, op, Span, Time);
    }
    for (const VQLDataType type : anyType) {
        for (const wchar_t* name : {L"isdistinct", L"isnotdistinct"}) Func(B, name, name, type, type);
        for (const wchar_t* name : {L"isnull", L"isnotnull"}) Func(B, name, name, type);
        for (const wchar_t* name : {L"greatest", L"max"}) Func(type, name, L"greatest", type, type);
        for (const wchar_t* name : {L"least", L"min"}) Func(type, name, L"least", type, type);
    }
    Func(B, L"and", L"and_", B, B);
    Func(B, L"or", L"or_", B, B);
    Func(B, L"not", L"not_", B);
}

void CreateFunctions::CreateArithmetic() {
    Func(D, L"+", L"plus", D, D);
    Func(I, L"+", L"plus", I, I);
    Func(Time, L"+", L"plus", Time, D);
    Func(Time, L"+", L"plus", Time, Span);
    Func(Date, L"+", L"plus", Date, I);
    Func(Span, L"+", L"plus", Span, Span);
    Func(S, L"+", L"concat", S, S);

    Func(D, L"-", L"minus", D, D);
    Func(I, L"-", L"minus", I, I);
    Func(Time, L"-", L"minus", Time, D);
    Func(Date, L"-", L"minus", Date, I);
    Func(D, L"-", L"minus", Time, Time);
    Func(Time, L"-", L"minus", Time, Span);
    Func(I, L"-", L"minus", Date, Date);
    Func(Span, L"-", L"minus", Span, Span);
    for (const VQLDataType type : {D, I, Span}) Func(type, L"-", L"negate", type);

    Func(D, L"*", L"times", D, D);
    Func(I, L"*", L"times", I, I);
    Func(Span, L"*", L"times", Span, D);
    Func(Span, L"*", L"times", D, Span);
    Func(D, L"/", L"divide", D, D);
    Func(Span, L"/", L"divide", Span, D);
    Func(I, L"%", L"mod", I, I);
}

void CreateFunctions::CreateMath() {
    for (const VQLDataType type : {D, I}) {
        Func(type, L"abs", L"abs_", type);
        for (const wchar_t* name : {L"ceil", L"floor", L"square"}) Func(type, name, name, type);
    }
    for (const wchar_t* name : {L"acos", L"asin", L"atan", L"cos", L"cot", L"degrees", L"exp", L"ln", L"log",
                                L"radians", L"sin", L"sqrt", L"tan"})
        Func(D, name, name, D);
    for (const wchar_t* name : {L"atan2", L"power", L"log"}) Func(D, name, name, D, D);
    Func(I, L"div", L"div_", I, I);
    for (const wchar_t* name : {L"pi", L"random"}) Func(D, name, name);
    Func(D, L"round", L"round", D);
    for (const VQLDataType type : numbers)
        for (const VQLDataType digits : numbers) Func(type, L"round", L"round2", type, digits);
    Func(I, L"sign", L"sign", D);
}

void CreateFunctions::CreateDates() {
    for (const wchar_t* name : {L"year", L"quarter", L"month", L"yearday", L"day", L"hour", L"minute", L"second",
                                L"millisecond", L"week", L"weekday"})
        Func(I, name, name, Time);
    for (const wchar_t* name : {L"monthname", L"dayname"}) Func(S, name, name, Time);
    for (const wchar_t* name : {L"day", L"hour", L"minute", L"second", L"millisecond", L"week"})
        Func(I, name, name, Span);

    for (const wchar_t* name : {L"truncyear", L"truncquarter", L"truncmonth", L"truncday", L"truncweek"})
        Func(Date, name, name, Time);
    Func(Time, L"trunctime", L"trunctime", Time, I);
    Func(Time, L"trunctime", L"trunctime", Date, I);
    for (const wchar_t* name : {L"truncday", L"truncweek"}) Func(Span, name, name, Span);
    Func(Span, L"trunctime", L"trunctime", Span, I);

    for (const wchar_t* name : {L"diffyear", L"diffquarter", L"diffmonth", L"diffday", L"diffhour", L"diffminute",
                                L"diffsecond", L"diffmillisecond", L"diffweek"})
        Func(I, name, name, Time, Time);
    for (const wchar_t* name : {L"diffday", L"diffhour", L"diffminute", L"diffsecond", L"diffmillisecond", L"diffweek"})
        Func(I, name, name, Span, Span);

    for (const wchar_t* name : {L"addyear", L"addquarter", L"addmonth", L"addday", L"addweek"}) {
        Func(Date, name, name, Date, I);
        Func(Time, name, name, Time, I);
    }
    for (const wchar_t* name : {L"addhour", L"addminute", L"addsecond", L"addmillisecond"})
        Func(Time, name, name, Time, I);
    for (const wchar_t* name : {L"addday", L"addhour", L"addminute", L"addsecond", L"addmillisecond", L"addweek"})
        Func(Span, name, name, Span, I);

    Func(Time, L"parsedate", L"parsedate", S, S);
    Func(Date, L"today", L"today");
    for (const wchar_t* name : {L"now", L"utc"}) Func(Time, name, name);
}

void CreateFunctions::CreateStrings() {
    Func(S, L"char", L"chr", D);
    Func(I, L"ascii", L"ascii", S);
    for (const VQLDataType number : numbers) {
        for (const wchar_t* name : {L"left", L"right", L"mid"}) Func(S, name, name, S, number);
        Func(S, L"space", L"space", number);
        Func(I, L"find", L"find3", S, S, number);
        Func(I, L"findnth", L"findnth", S, S, number);
        for (const wchar_t* name : {L"split", L"rextract"}) Func(S, name, name, S, S, number);
    }
    Func(I, L"find", L"find2", S, S);
    for (const wchar_t* name : {L"replace", L"rreplace"}) Func(S, name, name, S, S, S);
    for (const wchar_t* name : {L"sortkey", L"upper", L"lower", L"ltrim", L"rtrim", L"trim"}) Func(S, name, name, S);
    Func(I, L"char_length", L"char_length", S);
    for (const wchar_t* name : {L"startswith", L"endswith", L"contains", L"rcontains"}) Func(B, name, name, S, S);
}

void CreateFunctions::CreateConversions() {
    for (const VQLDataType type : anyType) {
        Func(I, L"to_int", L"to_int", type);
        Func(D, L"to_real", L"to_real", type);
        Func(S, L"to_str", L"to_str", type);
        // Twice, as it always was; the exact pass takes the first.
        for (int i = 0; i < 2; ++i) Func(I, L"hash", L"hash", type);
        for (const VQLDataType from : anyType) Func(type, L"cast", L"cast", type, from);
    }
    for (const VQLDataType type : {I, D, Date, Time, S}) Func(Date, L"to_date", L"to_date", type);
    for (const VQLDataType type : {I, D, Date, Time, Span, S}) {
        Func(Time, L"to_datetime", L"to_datetime", type);
        Func(Span, L"to_duration", L"to_duration", type);
    }
}

}  // namespace qve
