#include <gtest/gtest.h>

#include <cstddef>
#include <string>

#include "tests/jet/statement_table.h"

namespace {

using tests::DatabaseTest;

struct ExpressionCase {
  const char* expression;
  const char* value;  // the result with its type, or "#3075"
};

class ExpressionTest : public DatabaseTest {
 protected:
  void SetUp() override {
    ASSERT_EQ(Run("create table Товары ([№] counter primary key, Имя text(20), Кол long, "
                  "Цена currency, Вес double, Дата datetime, Есть yesno, Код guid)"),
              0);
    ASSERT_EQ(Run("insert into Товары (Имя, Кол, Цена, Вес, Дата, Есть) "
                  "values ('Ёлка', 5, 10.5, 0.1, #2/1/2003#, yes)"),
              0);
  }

  template <std::size_t count>
  void Check(const ExpressionCase (&cases)[count]) const {
    for (const ExpressionCase& c : cases) {
      const std::string select = std::string("select ") + c.expression + " from Товары";
      EXPECT_EQ(tests::AnswerOf(*db, select, tests::Kinds::kShown), c.value) << c.expression;
    }
  }
};

TEST_F(ExpressionTest, OperatorsHaveJetsPrecedenceTypesAndNulls) {
  Check({
      // & binds looser than +, and takes numbers, dates and Null
      {"'a' & 1+1", "Text a2"},
      {"Имя & \"q\"", "Text Ёлкаq"},
      {"null & 'x'", "Text x"},
      {"null & null", "Null"},
      {"Есть & ''", "Text -1"},
      {"Цена & ''", "Text 10,5"},
      {"(1 = 1) & ''", "Text -1"},
      // + joins texts, adds numbers, propagates Null
      {"'a' + 'b'", "Text ab"},
      {"'2' + 3", "Double 5"},
      {"'a' + null", "Null"},
      {"'a' + 3", "#3464"},
      {"Дата + 1", "Date 37654"},
      {"Дата * 2", "Double 75306"},
      {"#1/3/2003# - #1/1/2003#", "Double 2"},
      // arithmetic
      {"5/2", "Double 2.5"},
      {"5\\2", "Long 2"},
      {"7.5 \\ 2", "Long 4"},
      {"-7 mod 3", "Long -1"},
      {"10 mod 4 * 2", "Long 2"},
      {"2 ^ 3 ^ 2", "Double 64"},
      {"-2 ^ 2", "Double -4"},
      {"2 ^ -1", "Double 0.5"},
      {"(-8) ^ 0.5", "#5"},
      {"1/0", "#11"},
      {"5 mod 0.2", "#11"},
      {"'5' * '2'", "Double 10"},
      {"&HFF + &h10", "Long 271"},
      {"1e3", "Double 1000"},
      {"-Есть", "Long 1"},
      {"-null", "Null"},
      {"2147483647 + 1", "#6"},
      {"65536 * 65536", "#6"},
      {"(-2147483647 - 1) \\ -1", "#6"},
      {"3000000000 + 1", "Double 3000000001"},
      // amounts are exact
      {"ccur(0.1) + ccur(0.2) = ccur(0.3) and 3 * ccur(0.1) - ccur(0.3) = 0", "True"},
      {"ccur(0.01) * ccur(0.025) & ccur(-0.015) * ccur(0.03)", "Text 0,0002-0,0004"},
      {"ccur('922337203685477') + Цена * 80", "#6"},
      {"ccur('922337203685477') * Цена", "#6"},
      {"1e300 * 1e300", "#6"},
      {"#12/31/9999# + 1", "#6"},
      // comparisons have the values -1 and 0; And, Or and Xor are not bitwise
      {"1 = 1", "True"},
      {"not 0", "True"},
      {"not 5", "False"},
      {"3 > 2 > 1", "False"},
      {"1 <> 1 xor 2 = 2", "True"},
      {"null = null", "Null"},
      {"null or true", "True"},
      {"null and false", "False"},
      {"null xor true", "Null"},
      {"false imp null", "True"},
      {"null imp true", "True"},
      {"true imp null", "Null"},
      {"true eqv false", "False"},
      {"null eqv null", "Null"},
      {"5 and 2", "True"},
      {"Есть = on", "True"},
      {"Есть + 1", "Long 0"},
      // texts compare by the sort order
      {"Имя = 'ёлка  '", "True"},
      {"Имя = 5", "#3464"},
      {"Кол = '5'", "#3464"},
      {"Имя in ('ЕЛЬ', 'ЁЛКА')", "True"},
      {"Кол not in (1, 2)", "True"},
      {"Кол in (1, null)", "Null"},
      {"Кол between 9 and 2", "True"},
      {"Кол between 2 and null", "Null"},
      {"Имя & 'x' between 'я' and 'а'", "True"},
      {"Имя not between 'а' and 'я'", "False"},
      // Like has Jet's wildcards, Alike the standard's
      {"Имя like 'ё*'", "True"},
      {"Имя like '%'", "False"},
      {"'x' like '[a'", "#3075"},
      {"null like '*'", "Null"},
      {"Имя alike '_л%'", "True"},
      {"Имя not alike 'ё*'", "True"},
      {"Имя is not null", "True"},
      {"Код is null", "True"},
      // names
      {"Товары!Имя", "Text Ёлка"},
      {"[товары].[ИМЯ]", "Text Ёлка"},
      {"Имена", "#3061"},
      {"\"Имена\"", "Text Имена"},
      {"'it''s \"x\"'", "Text it's \"x\""},
      {"count(*)", "Long 1"},
      {"sum(Цена)", "Currency 10.5"},
      {"max(Имя)", "Text Ёлка"},
      {"Кол + count(*)", "#3122"},
      // errors
      {"1 +", "#3075"},
      {"'abc", "#3075"},
      {"#31/31/2003#", "#3075"},
      {"[Имя", "#3126"},
  });
}

TEST_F(ExpressionTest, FunctionsOfTexts) {
  Check({
      {"left(Имя, 2) & right(Имя, 3) & mid(Имя, 2, 1)", "Text Ёллкал"},
      {"mid('абв', 2) & mid('абв', 9)", "Text бв"},
      {"left('x', -1)", "#5"},
      {"mid('x', 0)", "#5"},
      {"left$(12345, 2)", "Text 12"},
      {"left(null, 2)", "Null"},
      {"len('😀ё')", "Long 3"},
      {"len(Вес)", "Long 3"},
      {"instr('абвАБВ', 'В')", "Long 3"},
      {"instr(4, 'абвАБВ', 'в')", "Long 6"},
      {"instr(1, 'абвАБВ', 'В', 0)", "Long 6"},
      {"instr('abc', '') & instr('', 'a') & instr(9, 'abc', 'a')", "Text 100"},
      {"instr('abc')", "#3087"},
      {"instrrev('abab', 'AB')", "Long 3"},
      {"instrrev('abab', 'ab', 3) & instrrev('ab', 'c')", "Text 10"},
      {"'[' & trim(' a ') & ltrim(' b ') & rtrim(' c ') & ']'", "Text [ab  c]"},
      {"ucase('ёжик ß') & lcase('ЁЖ')", "Text ЁЖИК ßёж"},
      {"space(2) & string(3, 'ёж') & string(2, 225)", "Text   ёёёбб"},
      {"space(1e9)", "#14"},
      {"replace('аБаб', 'А', '-')", "Text -Б-б"},
      {"replace('aaaa', 'a', 'bb', 2, 2)", "Text bbbba"},
      {"replace('aAa', 'A', '', 1, -1, 0)", "Text aa"},
      {"strcomp('ЕЛЬ', 'ель') & strcomp('a', 'b') & strcomp('a', 'A', 0)", "Text 0-11"},
      {"strreverse('абв')", "Text вба"},
      {"asc('Ёж') & ' ' & ascw('Ё') & chr(168) & chrw(1105)", "Text 168 1025Ёё"},
      {"asc('')", "#5"},
      {"chr(256)", "#5"},
  });
}

TEST_F(ExpressionTest, FunctionsOfNumbers) {
  Check({
      {"round(2.5) & round(3.5) & round(-2.5)", "Text 24-2"},
      {"round(0.125, 2)", "Double 0.12"},
      {"round(ccur('10,015'), 2)", "Currency 10.02"},
      {"round(Цена)", "Currency 10"},
      {"round(1, -1)", "#5"},
      {"int(-2.5) & fix(-2.5)", "Text -3-2"},
      {"int(Кол)", "Long 5"},
      {"int('7,9')", "Double 7"},
      {"int(#1/1/2003 10:00#)", "Date 37622"},
      {"abs(-Цена)", "Currency 10.5"},
      {"sgn(-Вес) & sgn(0)", "Text -10"},
      {"sqr(2.25) + exp(0) + log(1) + sin(0) + cos(0) + tan(0) + atn(0)", "Double 3.5"},
      {"sqr(-1)", "#5"},
      {"log(0)", "#5"},
      {"exp(1000)", "#6"},
      {"sqr(null)", "Null"},
      {"rnd(-1) = rnd(-1)", "True"},
      {"rnd() between 0 and 1", "True"},
      {"partition(20, 0, 99, 5) & partition(100, 0, 99, 5)", "Text  20: 24100:   "},
  });
}

TEST_F(ExpressionTest, ConversionsRoundHalvesToEvenOrFail) {
  Check({
      {"cint(2.5) & clng('3,5') & cbyte(0.5)", "Text 240"},
      {"cint(40000)", "#6"},
      {"clng('семь')", "#3464"},
      {"clng(null)", "#94"},
      {"csng(0.1)", "Single 0.1"},
      {"cdbl('1e-5')", "Double 1E-05"},
      {"ccur(0.00005)", "Currency 0"},
      {"cdate('1.2.2003 4:05')", "Date 37653.1701388889"},
      {"cdate('12/31/2004') & cdate('31/12/2004') & cdate('12.31.2004')",
       "Text 31.12.200431.12.200431.12.2004"},
      {"cdate('13/31/2004')", "#3464"},
      {"#1 jan 2005# = #jan 1, 2005# and #1-January-05 10:00 pm# = #1/1/2005 22:00#", "True"},
      {"ccur('1 234 567,8901') & '|' & cdbl('-12\xC2\xA0"
       "345.5')",
       "Text 1234567,8901|-12345,5"},
      {"ccur('1,5 0')", "#3464"},
      {"cdec('1,25') * 2", "Double 2.5"},
      {"strconv('ёЖ, пёс Xy', 1) & strconv('ЁЖ', 2) & strconv('ёЖ, пёс xY\tz', 3)",
       "Text ЁЖ, ПЁС XYёжЁж, Пёс Xy\tZ"},
      {"strconv('a', 64)", "#5"},
      {"strconv(null, 1)", "Null"},
      {"timer() between 0 and 86400 and timer() - hour(time()) * 3600 between 0 and 3600", "True"},
      {"cbool('on')", "True"},
      {"cstr(Дата) & cstr(1/3)", "Text 01.02.20030,333333333333333"},
      {"cvar(Цена)", "Currency 10.5"},
      {"val(' 1 2,5') + val('&HFF') + val('x')", "Double 267"},
      {"str(2.5) & str(-1)", "Text  2.5-1"},
      {"hex(255) & hex(-1) & oct(8)", "Text FFFFFFFFFF10"},
      {"isnumeric('1,5') and isnumeric(Кол) and not isnumeric('1x') and not isnumeric(null)",
       "True"},
      {"isdate(Дата) and isdate('1.2.2003') and not isdate(5)", "True"},
      {"isnull(Код) and not isempty(Код)", "True"},
      {"iif(Кол > 3, Цена, 1\\0)", "Currency 10.5"},
      {"iif(null, 1, 2)", "Long 2"},
      {"switch(Кол < 3, 'мало', Кол > 4, 'много', true, 1/0)", "Text много"},
      {"switch(false, 1)", "Null"},
      {"choose(1.6, 1/0, 'два')", "Text два"},
      {"choose(3, 1, 2)", "Null"},
      {"switch(1)", "#3087"},
      {"Nz(Имя, '')", "#3085"},
      {"dlookup('Имя', 'Товары')", "#3085"},
      {"Моя(1)", "#3085"},
  });
}

TEST_F(ExpressionTest, FunctionsOfMoments) {
  Check({
      {"year(Дата) & month(Дата) & day(Дата)", "Text 200321"},
      {"hour(#4:05:06#) & minute(#4:05:06#) & second('4:05:06')", "Text 456"},
      {"weekday(Дата) & weekday(Дата, 2)", "Text 76"},
      {"dateadd('m', 1, #1/31/2004#)", "Date 38046"},
      {"dateadd('yyyy', -4, #2/29/2004#) & ''", "Text 29.02.2000"},
      {"dateadd('h', 25, #12/29/1899 23:30#) & ''", "Text 31.12.1899 0:30:00"},
      {"dateadd('yyyy', 9000, Дата)", "#5"},
      {"dateadd('x', 1, Дата)", "#5"},
      {"datediff('d', Дата, #3/1/2003#) & datediff('m', Дата, #3/1/2003#)", "Text 281"},
      {"datediff('h', #10:59#, #11:01#) & datediff('n', #11:01#, #10:59#)", "Text 1-2"},
      {"datediff('ww', #2/1/2003#, #2/2/2003#) & datediff('w', #2/1/2003#, #2/14/2003#)",
       "Text 11"},
      {"datepart('q', Дата) & datepart('y', Дата) & datepart('ww', #12/31/2003#)", "Text 13253"},
      {"datepart('ww', #1/1/2005#, 2, 2)", "Long 53"},
      {"dateserial(2003, 14, 0) & ''", "Text 31.01.2004"},
      {"dateserial(29, 1, 1) - dateserial(30, 1, 1)", "Double 36160"},
      {"dateserial(2147483647, 1, 1)", "#5"},
      {"timeserial(1, 90, 0) & timevalue(#1/1/2003 4:05#)", "Text 2:30:004:05:00"},
      {"datevalue('1.2.2003 4:05')", "Date 37653"},
      {"year('когда-то')", "#3464"},
      {"year(1e9)", "#6"},
      {"year(null)", "Null"},
      {"monthname(2) & monthname(12, true)", "Text Февральдек"},
      {"weekdayname(1) & weekdayname(1, true, 1)", "Text понедельникВс"},
      {"monthname(13)", "#5"},
      {"date() = int(now()) and abs(now() - date() - time()) < 0.001", "True"},
  });
}

TEST_F(ExpressionTest, FormatServesNamedPatternsNumbersMomentsAndTexts) {
  Check({
      {"format(1234567.891, '#,##0.00')", "Text 1\u00A0234\u00A0567,89"},
      {"format(0.125, '0.00') & format(2.5, '0') & format(-0.4, '0')", "Text 0,1330"},
      {"format(7, '000') & format(0.5, '#.0#') & format(1234, '.0')", "Text 007,51234,0"},
      {"format(0.256, '0.0%') & format(12345, '0.00E+00')", "Text 25,6%1,23E+04"},
      {"format(999.96, '0.0E-0') & format(1234567, '0,')", "Text 1,0E31235"},
      {"format(-5, '0;(0);\"ноль\"') & format(0, '0;(0);\"ноль\"')", "Text (5)ноль"},
      {"format(1234567, '000-00-00') & format(null, '0')", "Text 123-45-67"},
      {"format(Цена, 'Standard') & format(1, 'Yes/No') & format(0.5, 'percent')",
       "Text 10,50Да50,00%"},
      {"format(1234.5, 'Currency')", "Text 1\u00A0234,50р."},
      {"format(Дата, 'dd.mm.yy') & format(Дата, ' d/m/yyyy, dddd')",
       "Text 01.02.03 1.2.2003, суббота"},
      {"format(#1/2/2003 14:05:09#, 'hh:mm:ss') & format(#14:05#, ' h:nn am/pm')",
       "Text 14:05:09 2:05 pm"},
      {"format(Дата, 'mmmm q y') & format('1.2.2003', '\" \"d')", "Text Февраль 1 32 1"},
      {"format(Дата, 'Long Date') & format(#4:05#, 'Short Time')", "Text 1 февраля 2003 г.04:05"},
      {"format('ёж', '>') & format('12345', '@@-@@') & format('a', '@@') & format('a', '!@@')",
       "Text ЁЖ123-45 aa "},
      {"format('слово', '0.00') & format(1/3)", "Text слово0,333333333333333"},
      {"formatnumber(1234.567) & formatnumber(2.5, 0)", "Text 1\u00A0234,573"},
  });
}

TEST_F(ExpressionTest, LongListsAndDeepNestingRunOrFailWithANumber) {
  std::string list = "0";
  for (int i = 1; i < 300; ++i)
    list += ", " + std::to_string(i);
  const auto answer = [&](const std::string& expression) {
    return tests::AnswerOf(*db, "select " + expression + " from Товары", tests::Kinds::kShown);
  };
  EXPECT_EQ(answer("cvar(iif(true, 299, 'x')) in (" + list + ")"), "True");
  EXPECT_EQ(answer("iif(true, 300, 'x') not in (" + list + ")"), "True");
  const auto nested = [](int depth, const std::string& before, const std::string& behind) {
    std::string text;
    for (int i = 0; i < depth; ++i)
      text += before;
    text += "1";
    for (int i = 0; i < depth; ++i)
      text += behind;
    return text;
  };
  EXPECT_EQ(answer(nested(12, "iif(Кол = 1, 2, ", ")")), "Long 1");
  EXPECT_EQ(answer(nested(90, "(1 - ", ")")), "#3360");
  EXPECT_EQ(answer(nested(5000, "(", ")")), "#3075");
  EXPECT_EQ(answer(nested(5000, "not ", "")), "#3075");
  EXPECT_EQ(answer(nested(5000, "", "+1")), "#3075");
  std::string joins = "1 from Товары as a";
  for (int i = 0; i < 50000; ++i)
    joins += " inner join Товары on true";
  EXPECT_EQ(answer(joins + " union select 1"), "#3360");
}

}  // namespace
