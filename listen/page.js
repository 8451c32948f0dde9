"use strict";
const main = document.getElementById("main");
const link = document.getElementById("link");
const speak = document.getElementById("speak");
const kLost = 15000;  // without a sign of the receiver

// In the reader's language and zone; the day where it is another one than today.
function tellTimes() {
  const today = new Date().toDateString();
  for (const time of document.querySelectorAll("time")) {
    const moment = new Date(time.dateTime);
    const clock = {hour: "numeric", minute: "2-digit"};
    const day = moment.toDateString() === today ? {} : {weekday: "short", month: "short", day: "numeric"};
    const text = moment.toLocaleString([], {...day, ...clock});
    if (time.textContent !== text) time.textContent = text;
  }
}

const atHome = () => [...document.querySelectorAll("#home article")];
let known = new Set(atHome().map(event => event.dataset.identity));

function sound() {
  const audio = new AudioContext();
  for (const at of [0, 0.5, 1]) {
    const tone = audio.createOscillator();
    tone.frequency.value = 1050;
    tone.connect(audio.destination);
    tone.start(audio.currentTime + at);
    tone.stop(audio.currentTime + at + 0.3);
  }
}

function say(text) {
  const words = new SpeechSynthesisUtterance(text);
  words.lang = document.documentElement.lang;
  speechSynthesis.speak(words);
}

function tellNew() {
  const fresh = atHome().filter(event => !known.has(event.dataset.identity));
  known = new Set(atHome().map(event => event.dataset.identity));
  if (fresh.length === 0 || speak.getAttribute("aria-pressed") !== "true") return;
  sound();
  for (const event of fresh)
    say([...event.querySelectorAll("h3, .times, .areas")].map(part => part.textContent).join(". "));
}

// What a reader has opened stays open.
const opened = () => new Set([...main.querySelectorAll("details[open] > summary")]
  .map(summary => summary.firstChild.textContent.trim()));

async function renew() {
  const answer = await fetch("./");
  if (!answer.ok) return;
  const fresh = new DOMParser().parseFromString(await answer.text(), "text/html").getElementById("main");
  const open = opened();
  for (const summary of fresh.querySelectorAll("summary"))
    summary.parentElement.open = open.has(summary.firstChild.textContent.trim());
  main.replaceChildren(...fresh.childNodes);
  main.dataset.version = fresh.dataset.version;
  tellTimes();
  tellNew();
}

let lastSign = Date.now();
function listen() {
  const news = new EventSource("news");
  news.addEventListener("hearing", ({data}) => {
    lastSign = Date.now();
    link.replaceChildren();
    const old = document.getElementById("hearing");
    if (old.outerHTML !== data) old.outerHTML = data;
  });
  news.addEventListener("content", ({data}) => {
    if (data !== main.dataset.version) renew().catch(() => {});
  });
  // A browser gives up for good where it is refused once.
  news.addEventListener("error", () => {
    if (news.readyState === EventSource.CLOSED) setTimeout(listen, 3000);
  });
}

setInterval(() => {
  if (Date.now() - lastSign < kLost || link.firstChild) return;
  const [box, words, meaning] = ["div", "p", "p"].map(name => document.createElement(name));
  box.className = "silent";
  words.className = "largest";
  words.textContent = document.body.dataset.noReceiver;
  meaning.textContent = document.body.dataset.meaning;
  box.append(words, meaning);
  link.append(box);
  document.getElementById("hearing").hidden = true;
}, 1000);

speak.hidden = !("speechSynthesis" in window);
speak.addEventListener("click", () => {
  const on = speak.getAttribute("aria-pressed") !== "true";
  speak.setAttribute("aria-pressed", on);
  if (on) say(speak.textContent);
});
setInterval(tellTimes, 60000);
tellTimes();
listen();
