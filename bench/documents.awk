# Writes a table text of many kinds of values: awk -v rows=200000 -f documents.awk
BEGIN {
  printf "Table:Документы\r\nField:Ид|Long|4|NotNull\r\nField:Номер|Text|20\r\n"
  printf "Field:Имя|Text|60|AllowZero\r\nField:Сумма|Curr|8\r\nField:Вес|Dbl|8\r\n"
  printf "Field:Дата|Date|8\r\nField:Есть|Bool|1\r\nField:Вид|Byte|1\r\nField:Код|Int|2\r\n"
  printf "Field:Доля|Single|4\r\nField:Слова|Memo|0|AllowZero\r\nField:Срок|Date|8\r\n"
  printf "Field:Связь|Long|4\r\nIndex:Ключ|Primary|Fields:Ид;\r\nIndex:Номер|Fields:Номер;\r\nRows\r\n"
  for (i = 1; i <= rows; i++)
    printf "%d|SДок-%d/%d|SОбщество «Ромашка» №%d|%d.4%d|%d.12%d|d%d|%s|%d|%d|%d.5|SСтрока ^2 слов %d|D200503041020%02d|%d\r\n",
      i, (i * 7919) % rows, i % 12, i % 977, i % 90000, i % 9 + 1, i % 1000, i % 9 + 1, i % 9000,
      i % 2 ? "T" : "F", i % 256, i % 30000, i % 50, i, i % 60, i % 5000
  printf "EndRows\r\nEndTable\r\n"
}
