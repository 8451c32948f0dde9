"use strict";
const byId = id => document.getElementById(id);
const kWords = {
  "sending": ["Sending", "good"], "idle": ["Keyed, nothing to send", "warn"],
  "paused": ["Transmit pause", "good"], "identifying": ["Identifying", "good"],
  "port closed": ["Off the air: no port", "bad"], "port failed": ["Off the air: port failed", "bad"],
  "port vanished": ["Off the air: device gone", "bad"],
};

function spell(seconds) {
  if (seconds === null) return "never";
  const s = Math.round(seconds), m = Math.floor(s / 60), h = Math.floor(m / 60);
  if (s < 60) return s + " s";
  if (m < 60) return m + " min " + s % 60 + " s";
  if (h < 24) return h + " h " + m % 60 + " min";
  return Math.floor(h / 24) + " d " + h % 24 + " h";
}
const ago = seconds => seconds === null ? "never" : spell(seconds) + " ago";
const sum = counts => Object.values(counts).reduce((a, b) => a + b, 0);

// Texts are only written where they changed, so that nothing flickers and a selection stays.
function write(element, text) {
  if (element.textContent !== text) element.textContent = text;
}

function row(body, index, cells) {
  while (body.children.length <= index) {
    const line = body.insertRow();
    for (const _ of cells) line.insertCell();
  }
  cells.forEach((text, i) => write(body.children[index].cells[i], text));
  return body.children[index];
}

function figure(index, name, value) {
  const list = byId("figures");
  while (list.children.length <= 2 * index + 1) {
    list.append(document.createElement("dt"), document.createElement("dd"));
  }
  write(list.children[2 * index], name);
  write(list.children[2 * index + 1], value);
}

function show(status) {
  const [words, mood] = kWords[status.state] || [status.state, "warn"];
  const name = shown(status.name || "Station");
  write(byId("name"), name);
  document.title = name;
  const more = status.endsIn > 0 ? ", " + spell(status.endsIn) + " more" : "";
  write(byId("state"), words + more);
  byId("state").className = mood;
  write(byId("port"), shown(status.port) + " " + status.rate + " bits a second, " +
        (status.keyed ? "transmitter keyed" : "transmitter not keyed"));
  const onAir = status.onAir;
  write(byId("onAir"), onAir
      ? shown(onAir.file) + ", block " + onAir.block + " of " + onAir.blocks + ", priority " + onAir.priority +
        (onAir.outIn === null ? "" : ", out in " + spell(onAir.outIn))
      : "Nothing on the air");
  byId("blocks").max = onAir ? onAir.blocks : 1;
  byId("blocks").value = onAir ? onAir.block : 0;
  status.queues.forEach((queue, i) => {
    const line = row(byId("queues"), i, ["" + queue.priority, queue.files.toLocaleString(),
        queue.bytes.toLocaleString(), queue.files ? spell(queue.oldest) : ""]);
    line.className = (queue.files ? "" : "empty") +
        (onAir && onAir.priority === queue.priority ? " now" : "");
  });
  const day = status.sinceMidnight;
  [["Last packet", ago(status.sincePacket)],
   ["Last arrival", status.intakePaused ? "intake paused by an operator" : ago(status.sinceArrival)],
   ["In the ingest folder", waiting(status.intake.ingest)],
   ["In holding folders", waiting(status.intake.holding)],
   ["Next identification", status.nextIdentification === null ? "off"
       : "in " + spell(status.nextIdentification)],
   ["Files today", day.files.toLocaleString()], ["Packets today", day.packets.toLocaleString()],
   ["Fill text today", day.fills.toLocaleString()],
   ["Discarded, unmatched", day.discarded + ", " + day.unmatched],
   ["Replaced, purged", day.replaced + ", " + day.purged], ["Errors today", "" + sum(day.errors)],
   ["Compression", status.compressionRatio.toFixed(2) + ":1"],
   ["Free on the disk", status.freeBytes === null ? "unknown"
       : (status.freeBytes / 1e9).toFixed(1) + " GB"],
   ["Running since", new Date(status.started).toLocaleString()],
   ["Version", status.version]].forEach(([name, value], i) => figure(i, name, value));
}

// A name or a text of strangers, as the other programs write it: what is not ASCII would turn a line
// round, or hide in it.
function shown(text) {
  const byte = value => "\\x" + value.toString(16).toUpperCase().padStart(2, "0");
  return text.replace(/[^ -~]/gu, sign => [...new TextEncoder().encode(sign)].map(byte).join(""));
}

function waiting(folder) {
  if (folder.trouble !== null) return shown(folder.trouble);
  return folder.files.toLocaleString() + (folder.more ? " or more" : "") +
      (folder.oldest === null ? "" : ", the oldest " + spell(folder.oldest));
}

function obstacle(what, words) {
  return shown(what.name === null ? what.folder : what.folder + "/" + what.name) + " " + words +
      " for " + spell(what.for) + ". " + shown(what.reason);
}

const kLongOnAir = 3600;  // seconds

// What somebody should see to, a line each.
function showTroubles(status) {
  const lines = (status.unusable || []).map(file => shown(file.name + " cannot be used. " + file.why));
  const intake = status.intake;
  if (intake.blocked) lines.unshift(obstacle(intake.blocked, "holds up the ingest folder"));
  intake.refused.forEach(refused => lines.push(obstacle(refused, "is refused and tried again")));
  if (status.silentBecause) {
    lines.unshift("The transmitter is keyed and carries nothing. " + shown(status.silentBecause));
  }
  if (status.onAir && status.onAir.outIn > kLongOnAir) {
    lines.push(shown(status.onAir.file) + " keeps the air for " + spell(status.onAir.outIn) +
        " more. ostrel-queue stop ends it.");
  }
  if (status.history) lines.push(shown(status.history));
  if (status.restored) {
    lines.push(new Date(status.restored.at).toLocaleString() + ": " + shown(status.restored.text));
  }
  const list = byId("troubles");
  list.hidden = lines.length === 0;
  while (list.children.length > lines.length) list.lastElementChild.remove();
  lines.forEach((line, i) => {
    if (list.children.length <= i) list.append(document.createElement("li"));
    write(list.children[i], line);
  });
}

const kEntriesShown = 12;

function showEntries(list) {
  const next = list.entries.slice(0, kEntriesShown);
  byId("next").hidden = next.length === 0;
  next.forEach((entry, i) => {
    const at = new Date(Date.now() + entry.outIn * 1000).toLocaleTimeString();
    const line = row(byId("entries"), i, [shown(entry.name), "" + entry.priority,
        entry.outIn === null ? "" : spell(entry.outIn), entry.outIn === null ? "" : at]);
    line.className = entry.onAir ? "now" : "";
  });
  while (byId("entries").children.length > next.length) byId("entries").lastElementChild.remove();
  const more = list.count - next.length;
  write(byId("more"), more > 0 ? "and " + more.toLocaleString() + " more" : "");
}

function showAlarms(alarms) {
  byId("alarmed").hidden = alarms.length === 0;
  alarms.forEach((alarm, i) => {
    const line = row(byId("alarms"), i, [shown(alarm.text), new Date(alarm.at).toLocaleString()]);
    line.className = alarm.event === "begin" ? "alarm" : "";
  });
}

const clockTime = text => text === null ? "never" : new Date(text).toLocaleTimeString([], { timeStyle: "short" });

function showInForce(warnings) {
  byId("inForce").hidden = warnings.length === 0;
  warnings.forEach((each, i) => row(byId("warnings"), i,
      [shown(each.name), each.events.map(shown).join(", "), clockTime(each.until),
       clockTime(each.lastOut), each.next === null ? shown(each.whyNot) : clockTime(each.next)]));
  while (byId("warnings").children.length > warnings.length) byId("warnings").lastElementChild.remove();
}

async function refresh() {
  try {
    const answer = await fetch("status.json", { signal: AbortSignal.timeout(4000) });
    const status = await answer.json();
    showAlarms(status.alarms);
    if (status.error) throw new Error(status.error);
    show(status);
    showTroubles(status);
    const queue = await fetch("queue.json", { signal: AbortSignal.timeout(4000) });
    const list = await queue.json();
    if (list.entries) showEntries(list);
  } catch (error) {
    write(byId("state"), "The station does not answer");
    byId("state").className = "bad";
    write(byId("port"), shown(error.message));
  }
  setTimeout(refresh, 1000);
}
// The station's server draws it.
async function refreshDay() {
  try {
    const answer = await fetch("day.html", { signal: AbortSignal.timeout(10000) });
    if (!answer.ok) throw new Error(answer.statusText);
    byId("courses").innerHTML = await answer.text();
    byId("day").hidden = false;
  } catch (error) {
    // The last drawing stays, and says of when it is.
  }
  setTimeout(refreshDay, 60000);
}
async function refreshInForce() {
  try {
    const answer = await fetch("in-force.json", { signal: AbortSignal.timeout(4000) });
    showInForce((await answer.json()).inForce);
  } catch (error) {
    // The page says already that nobody answers.
  }
  setTimeout(refreshInForce, 10000);
}
refresh();
refreshDay();
refreshInForce();
