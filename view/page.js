const rows = [...document.querySelectorAll("tr")];
const box = document.querySelector("input");
let here = -1;

function span(className, textContent) {
  return Object.assign(document.createElement("span"), { className, textContent });
}
for (const source of document.querySelectorAll("pre")) {
  const pieces = source.textContent.split(/(<\/?tn[\w-]*|\{[^}]*\})/i);
  const dressed = pieces.map((text, at) => at % 2 === 0 ? text : span(text[0] === "<" ? "tag" : "value", text));
  source.replaceChildren(...dressed);
}

// Puts behind an instruction what its operands stand for.
const names = new Map();
const key = (line, word, operand) =>
  (line.dataset.part % 2 && operand.startsWith("l_") && !/g(lobal)?$/.test(word) ? line.dataset.part : 0) + operand;
for (const line of document.querySelectorAll(".directive")) {
  const [, word, operand, name] = line.textContent.match(/^\.(\w+)\t(\w+)\t(".*")/s) ?? [];
  if (name) names.set(key(line, word, operand), name);
}
for (const line of document.querySelectorAll(".code")) {
  const [word, ...operands] = line.textContent.split(/,? /);
  const found = operands.map((operand) => names.get(key(line, word, operand))).filter(Boolean);
  line.append(...found.map((name) => span("note", ` ${name}`)));
}

// Goes to the next of the rows, or back, around the end.
function step(list, back) {
  rows[here]?.classList.remove("here");
  const ahead = list.filter((row) => back ? row < here : row > here);
  here = (ahead.length > 0 ? ahead : list).at(back ? -1 : 0) ?? -1;
  rows[here]?.classList.add("here");
  rows[here]?.scrollIntoView({ block: "center" });
}

const having = (test) => [...rows.keys()].filter((at) => test(rows[at]));
function search(back) {
  const wanted = box.value.toLowerCase();
  const is_hit = (row) => wanted !== "" && row.textContent.toLowerCase().includes(wanted);
  const hits = having((row) => row.classList.toggle("hit", is_hit(row)));
  step(hits, back);
  document.querySelector("output").textContent = wanted && `${hits.indexOf(here) + 1} of ${hits.length}`;
}

const keys = { j: [".code"], k: [".code", true], e: [".error, .warning"] };
box.addEventListener("input", () => { step([]); search(); });
document.addEventListener("keydown", (event) => {
  if (event.target === box && event.key === "Enter") search(event.shiftKey);
  if (event.target === box && event.key === "Escape") box.blur();
  if (event.target === box || event.ctrlKey || event.altKey || event.metaKey) return;
  if (event.key === "/") box.focus(), event.preventDefault();
  const [selector, back] = keys[event.key] ?? [];
  if (selector) step(having((row) => row.querySelector(selector)), back);
});
