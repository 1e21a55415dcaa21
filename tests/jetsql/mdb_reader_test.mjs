// Reads databases that jetsql writes with npm's mdb-reader and compares every value with what jetsql
// exports as JSON. Exit code 77 (skipped) where the package is not installed.
//   mdb_reader_test.mjs JETSQL     (NODE_PATH: the folder of the packages)
import { execFileSync } from "node:child_process";
import { mkdtempSync, readFileSync, rmSync } from "node:fs";
import { createRequire } from "node:module";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { pathToFileURL } from "node:url";

const require = createRequire(import.meta.url);
let reader;
try {
  reader = (await import(pathToFileURL(require.resolve("mdb-reader")).href)).default;
} catch {
  console.log("mdb-reader is not installed: skipped");
  process.exit(77);
}

const folder = mkdtempSync(join(tmpdir(), "mdb-reader-"));
const file = join(folder, "judged.mdb");
const jetsql = (...words) =>
  execFileSync(process.argv[2], words, { encoding: "utf8", maxBuffer: 1 << 26, stdio: "pipe" });
// In the form that jetsql gives it.
const plain = (value) => {
  if (value instanceof Date) return value.toISOString().slice(0, 19).replace("T", " ");
  if (Buffer.isBuffer(value)) return "0x" + value.toString("hex").toUpperCase();
  return value === undefined ? null : value;
};
const sameValue = (theirs, ours) => {
  const value = plain(theirs);
  if (typeof ours === "number") return Number(value) === ours;
  if (theirs instanceof Date) return value === (ours.length === 10 ? ours + " 00:00:00" : ours);
  if (typeof ours === "string" && ours.startsWith("{")) return `{${value.toUpperCase()}}` === ours;
  return value === ours;
};

try {
  jetsql("create", file);
  const types = "Ид counter primary key, Т text(255), М memo, Б byte, Ц short, Д long, С single, " +
    "Ч double, К currency, В datetime, Да bit, О longbinary, Г guid, Н decimal(12, 3)";
  const rows = [`create table Всё (${types})`];
  for (let i = 0; i < 300; ++i) {
    const text = i % 3 === 0 ? `String(${i % 250}, 'ё')` : `'naïve ${i}'`;
    rows.push(`insert into Всё (Т, М, Б, Ц, Д, С, Ч, К, В, Да, О, Г, Н) values (${text},
      String(${i * 41 % 9000}, '${"aЖ"[i % 2]}'), ${i % 256}, ${i - 150}, ${i * 7919 - 1000000}, ${i}.5,
      ${i} / 7, ${i}.1234, #20${String(i % 90 + 10)}-02-03 04:05:${String(i % 60).padStart(2, "0")}#,
      ${i % 2 ? "yes" : "no"}, 0x${(i * 2654435761).toString(16).padStart(12, "0")},
      '{01234567-89AB-CDEF-0123-${String(i).padStart(12, "0")}}', '${i}.125')`);
  }
  rows.push("insert into Всё (Т) values ('')", "create index И on Всё (Т desc, К)");
  jetsql("run", file, rows.join(";\n"));
  const ours = JSON.parse(jetsql("export", file, "Всё", "--mode", "json"));
  const theirs = new reader(readFileSync(file)).getTable("Всё").getData();
  let wrong = ours.length === theirs.length && ours.length === 301 ? 0 : 1;
  ours.forEach((row, i) => {
    for (const [name, value] of Object.entries(row)) {
      if (sameValue(theirs[i]?.[name], value)) continue;
      if (++wrong < 10) console.log(`row ${i}, ${name}:`, theirs[i]?.[name], "instead of", value);
    }
  });
  console.log(`${theirs.length} rows read, ${wrong} differences`);
  process.exitCode = wrong === 0 ? 0 : 1;
} finally {
  rmSync(folder, { recursive: true });
}
