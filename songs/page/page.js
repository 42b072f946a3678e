"use strict";
(() => {
  const song = JSON.parse(document.getElementById("data").textContent);
  const byId = (id) => document.getElementById(id);
  const sung = song.parts.filter((part) => part.notes.length > 0);
  const duration = song.seconds;

  // ---- text and elements -------------------------------------------------------------------------------------------

  function element(name, attributes = {}, ...children) {
    const made = document.createElement(name);
    for (const [key, value] of Object.entries(attributes)) made.setAttribute(key, value);
    made.append(...children);
    return made;
  }
  function shape(name, attributes, ...children) {
    const made = document.createElementNS("http://www.w3.org/2000/svg", name);
    for (const [key, value] of Object.entries(attributes)) made.setAttribute(key, value);
    made.append(...children);
    return made;
  }
  function clockText(seconds, digits = 0) {
    const scale = 10 ** digits;
    const units = Math.floor(Math.max(seconds, 0) * scale + 1e-6);
    const rest = String(Math.floor(units / scale) % 60).padStart(2, "0");
    return `${Math.floor(units / scale / 60)}:${rest}${digits ? "." + String(units % scale).padStart(digits, "0") : ""}`;
  }
  const partName = (part) => part.name || (sung.length > 1 ? `Part ${song.parts.indexOf(part) + 1}` : "Voice");
  const voiceNames = (part) => [...new Set(part.voices.map((voice) => voice.name))].join(", ");
  const phonemesOf = (syllable) => syllable.phonemes.map((phoneme) => phoneme.symbol).join(" ");
  const written = (syllable) => (syllable.text ? syllable.text + (syllable.hyphen ? "-" : "") : "");

  /** The last of a list, sorted by start, that has begun by then; -1: none has. */
  function lastBegun(list, seconds) {
    let low = 0, high = list.length;
    while (low < high) {
      const middle = (low + high) >> 1;
      if (list[middle].start <= seconds) low = middle + 1;
      else high = middle;
    }
    return low - 1;
  }
  const begunAt = (list, seconds) => list[Math.max(lastBegun(list, seconds), 0)];

  // ---- title and words ---------------------------------------------------------------------------------------------

  function writeTitle() {
    document.title = song.title;
    byId("title").textContent = song.title;
    const facts = [song.composer, sung.length > 1 ? `${sung.length} parts` : voiceNames(sung[0] || {voices: []}),
                   clockText(duration)];
    byId("byline").textContent = facts.filter(Boolean).join(" · ");
    for (const remark of song.remarks) byId("remarks").append(element("p", {}, remark));
    byId("remarks").append(element("p", {}, `Sung by torv from ${song.input}.`));
  }

  function stamp(seconds) {
    const button = element("button", {type: "button", class: "stamp", "aria-label": `Go to ${clockText(seconds)}`},
                           clockText(seconds));
    button.addEventListener("click", () => seek(seconds));
    return button;
  }

  function noteTable(part) {
    const head = element("tr", {}, ...["Bar", "Time", "Syllable", "Phonemes", "Note", "Length"].map(
        (title) => element("th", {scope: "col"}, title)));
    const body = element("tbody");
    for (const note of part.notes)
      for (const syllable of note.lyric) {
        const measure = begunAt(song.measures, syllable.start);
        const cells = [measure ? measure.number : "", stamp(syllable.start), written(syllable) || "(goes on)",
                       phonemesOf(syllable), note.name, (syllable.end - syllable.start).toFixed(2)];
        body.append(element("tr", {}, ...cells.map((cell) => element("td", {}, cell))));
      }
    return element("table", {}, element("thead", {}, head), body);
  }

  function writeWords() {
    const known = new Map();
    for (const part of sung) {
      const column = element("section", {"data-part": ""}, element("h3", {}, partName(part)));
      column.style.setProperty("--hue", part.hue);
      const text = part.lines.map((line) => line.text).join("\n");
      if (!text) column.append(element("p", {}, "Sung without words."));
      else if (known.has(text)) column.append(element("p", {}, `The same words as ${known.get(text)}.`));
      else {
        known.set(text, partName(part));
        column.append(element("ol", {class: "lines"},
                              ...part.lines.map((line) => element("li", {}, stamp(line.start), line.text))));
      }
      const details = element("details", {}, element("summary", {}, "Note by note"));
      details.addEventListener("toggle", () => details.append(
          element("div", {class: "table", tabindex: "0", role: "region", "aria-label": `Notes of ${partName(part)}`},
                  noteTable(part))), {once: true});
      column.append(details);
      byId("word-columns").append(column);
    }
    byId("words").hidden = sung.length === 0;
  }

  // ---- sound -------------------------------------------------------------------------------------------------------

  /** Plays all parts from one clock, that of the sound output. */
  class Sound {
    constructor() {
      this.tracks = song.parts.filter((part) => part.sound).map((part) => ({part, ...part.sound}));
      if (song.mix) this.tracks = [{part: null, wave: song.mix, left: 1, right: 1}];
      this.position = 0;
      this.playing = false;
    }
    get isThere() { return this.tracks.length > 0; }
    get hasParts() { return this.tracks.some((track) => track.part); }

    async load() {
      if (this.context) return;
      this.context = new AudioContext({sampleRate: song.soundRate});
      await Promise.all(this.tracks.map(async (track) => {
        const bytes = Uint8Array.from(atob(track.wave), (character) => character.charCodeAt(0));
        track.wave = "";
        track.buffer = await this.context.decodeAudioData(bytes.buffer);
        track.gain = this.context.createGain();
        track.gain.gain.value = this.gainOf(track);
        if (track.buffer.numberOfChannels === 1) {
          const sides = this.context.createChannelMerger(2);
          [track.left, track.right].forEach((value, side) => {
            const gain = this.context.createGain();
            gain.gain.value = value;
            track.gain.connect(gain).connect(sides, 0, side);
          });
          sides.connect(this.context.destination);
        } else {
          track.gain.connect(this.context.destination);
        }
      }));
    }

    gainOf(track) { return !track.part || isHeard(track.part) ? 1 : 0; }
    updateGains() {
      for (const track of this.tracks)
        if (track.gain) track.gain.gain.setTargetAtTime(this.gainOf(track), this.context.currentTime, 0.01);
    }

    /** Where the sound is that one hears now. */
    now() {
      if (!this.playing) return this.position;
      const heard = this.context.currentTime - (this.context.outputLatency || 0) - this.startedAt;
      return Math.min(this.position + Math.max(heard, 0), duration);
    }

    async play() {
      await this.load();
      await this.context.resume();
      if (this.position >= duration - 0.05) this.position = 0;
      this.startedAt = this.context.currentTime + 0.02;
      for (const track of this.tracks) {
        track.source = new AudioBufferSourceNode(this.context, {buffer: track.buffer});
        track.source.connect(track.gain);
        track.source.start(this.startedAt, this.position);
      }
      this.playing = true;
    }
    pause() {
      this.position = this.now();
      this.playing = false;
      for (const track of this.tracks) if (track.source) track.source.stop();
    }
  }
  const sound = new Sound();

  // ---- parts: mute and solo ----------------------------------------------------------------------------------------

  const HUES = [255, 5, 165, 60, 305, 215, 30, 125];
  song.parts.forEach((part, index) => {
    part.hue = HUES[index % HUES.length];
    part.muted = part.solo = false;
  });
  const isHeard = (part) => (song.parts.some((other) => other.solo) ? part.solo : !part.muted);

  function toggleButton(part, what, word) {
    const button = element("button", {type: "button", "aria-pressed": "false", "aria-label": `${word} ${partName(part)}`},
                           word);
    button.disabled = !sound.hasParts;
    button.addEventListener("click", () => {
      part[what] = !part[what];
      button.setAttribute("aria-pressed", String(part[what]));
      sound.updateGains();
      showHeard();
    });
    return button;
  }
  function writeParts() {
    for (const part of song.parts) {
      const name = element("span", {class: "name"}, element("b", {}, partName(part)));
      if (voiceNames(part)) name.append(element("small", {}, voiceNames(part)));
      const item = element("li", {"data-part": ""}, name);
      item.style.setProperty("--hue", part.hue);
      if (song.parts.length > 1) item.append(toggleButton(part, "muted", "Mute"), toggleButton(part, "solo", "Solo"));
      byId("parts").append(item);
    }
    byId("parts").hidden = song.parts.length < 2;
  }
  function showHeard() {
    for (const system of systems)
      system.lanes.forEach((lane, index) => lane.classList.toggle("silent", !isHeard(sung[index])));
  }

  // ---- the notes, in lines as long as the page is wide -------------------------------------------------------------

  const GUTTER = 34, RIGHT = 10, NUMBERS = 22, TEMPOS = 14, KEY = 5.5, LANE_HEAD = 20, WORDS = 38, SOFTEST = -60;
  const PRINT_WIDTH = 880;
  let systems = [];
  let zoom = 1;
  let width = 0;

  const measuring = document.createElement("canvas").getContext("2d");
  function textWidth(text, font) {
    measuring.font = font;
    return measuring.measureText(text).width;
  }
  const wordsWidth = (syllable) => Math.max(textWidth(written(syllable), "13px system-ui"),
                                            textWidth(phonemesOf(syllable), "10px monospace"));

  function measureParts() {
    for (const part of sung) {
      const keys = part.notes.map((note) => note.key);
      part.lowest = keys.reduce((a, b) => Math.min(a, b)) - 2;
      part.highest = Math.max(keys.reduce((a, b) => Math.max(a, b)) + 2, part.lowest + 9);
      part.roll = (part.highest - part.lowest + 1) * KEY;
      part.syllables = part.notes.flatMap((note) => note.lyric);
      part.syllables.forEach((syllable, index) => {
        const next = part.syllables[index + 1];
        syllable.room = (next ? next.start : duration) - syllable.start;
        syllable.needs = wordsWidth(syllable);
      });
    }
  }
  /** So many pixels a second that nine of ten syllables fit. */
  function comfortableScale() {
    const needed = sung.flatMap((part) => part.syllables.filter((syllable) => syllable.room > 0)
        .map((syllable) => (syllable.needs + 7) / syllable.room)).sort((a, b) => a - b);
    const fitting = needed.length ? needed[Math.floor(needed.length * 0.9)] : 80;
    return Math.min(Math.max(fitting, 40), 220);
  }

  /** Lines end where measures do; where one measure is longer than a line, at a beat; else anywhere. */
  function cutIntoSystems(available, scale) {
    const longest = available / scale;
    const beats = song.measures.flatMap((measure) => measure.beats.map((start) => ({start})));
    const lastWithin = (places, from, until) => {
      const place = places[lastBegun(places, until)];
      return place && place.start > from + 0.05 ? place.start : null;
    };
    const cuts = [];
    for (let start = 0; start < duration - 0.001;) {
      const limit = start + longest;
      const end = limit >= duration * 1.0001 - 0.05 ? duration
                                      : lastWithin(song.measures, start, limit) ?? lastWithin(beats, start, limit) ?? limit;
      cuts.push({start, end, scale: Math.min(available / (end - start), scale * 1.6)});
      start = end;
    }
    return cuts;
  }

  function layOut(pageWidth) {
    width = pageWidth;
    const available = width - GUTTER - RIGHT;
    const lanes = sung.reduce((sum, part) => sum + LANE_HEAD + part.roll + WORDS, 0);
    systems = cutIntoSystems(available, comfortableScale() * zoom).map((cut) => ({...cut, lanes: []}));
    placeTempos();
    for (const system of systems) {
      system.ruler = NUMBERS + (system.tempos.length ? TEMPOS : 0);
      system.height = system.ruler + lanes;
    }
    byId("systems").replaceChildren(...systems.map((system) => {
      system.element = element("div", {class: "system"});
      system.element.style.aspectRatio = `${width} / ${system.height}`;
      system.element.addEventListener("click", (event) => seek(timeAt(system, event.clientX)));
      watcher.observe(system.element);
      return system.element;
    }));
    showCursor();
  }
  /** Of many changes close together those that one can read. */
  function placeTempos() {
    for (const system of systems) system.tempos = [];
    let before = null, shown = null;
    for (const tempo of song.tempos.slice(Math.max(lastBegun(song.tempos, 0), 0))) {
      const system = begunAt(systems, tempo.start);
      if (!system || tempo.start >= duration) continue;
      const x = xAt(system, Math.max(tempo.start, system.start)) + 4;
      const isCrowded = before !== null && system === before.system && x - before.x < 62;
      if (isCrowded || (shown && Math.abs(tempo.quartersPerMinute / shown - 1) < 0.02)) continue;
      system.tempos.push({x, text: `♩ = ${Math.round(tempo.quartersPerMinute)}`});
      before = {system, x};
      shown = tempo.quartersPerMinute;
    }
  }

  const watcher = new IntersectionObserver((entries) => {
    for (const entry of entries)
      if (entry.isIntersecting) draw(systems.find((system) => system.element === entry.target));
  }, {rootMargin: "600px"});

  const xAt = (system, seconds) => GUTTER + (seconds - system.start) * system.scale;
  function timeAt(system, clientX) {
    const box = system.element.getBoundingClientRect();
    const x = (clientX - box.left - system.element.clientLeft) * width / system.element.clientWidth;
    return Math.min(Math.max(system.start + (x - GUTTER) / system.scale, system.start), system.end);
  }

  function draw(system) {
    if (!system || system.drawn) return;
    system.drawn = true;
    const measures = song.measures.filter((measure) => measure.end > system.start && measure.start < system.end);
    const numbers = measures.map((measure) => measure.number);
    const label = numbers.length > 1 ? `Bars ${numbers[0]} to ${numbers.at(-1)}`
                : numbers.length ? `Bar ${numbers[0]}` : `From ${clockText(system.start)}`;
    const picture = shape("svg", {viewBox: `0 0 ${width} ${system.height}`, role: "img", "aria-label": label});
    drawRuler(system, picture, measures);
    let top = system.ruler;
    for (const part of sung) {
      picture.append(drawLane(system, part, top));
      top += LANE_HEAD + part.roll + WORDS;
    }
    system.lanes = [...picture.querySelectorAll(".lane")];
    system.element.replaceChildren(picture);
    showHeard();
  }

  function drawRuler(system, picture, measures) {
    const lineAt = (seconds, name, top) => {
      const x = xAt(system, seconds);
      picture.append(shape("line", {class: name, x1: x, x2: x, y1: top, y2: system.height}));
    };
    const isIn = (seconds) => seconds >= system.start - 1e-6 && seconds < system.end - 1e-6;
    for (const measure of measures) {
      for (const beat of measure.beats.slice(1)) if (isIn(beat)) lineAt(beat, "beat", system.ruler);
      if (!isIn(measure.start)) continue;
      lineAt(measure.start, "bar", system.ruler - 14);
      picture.append(shape("text", {class: "number", x: xAt(system, measure.start) + 4, y: system.ruler - 6}, measure.number));
    }
    for (const {x, text} of system.tempos) picture.append(shape("text", {class: "tempo", x, y: 14}, text));
  }

  function drawLane(system, part, top) {
    const lane = shape("g", {class: "lane", "data-part": ""});
    lane.style.setProperty("--hue", part.hue);
    const rollTop = top + LANE_HEAD;
    const rollEnd = rollTop + part.roll;
    const right = xAt(system, system.end);
    const yOf = (key) => rollTop + (part.highest - key + 0.5) * KEY;
    lane.append(shape("line", {class: "rule", x1: 0, x2: width, y1: top, y2: top}));
    if (sung.length > 1) lane.append(shape("text", {class: "part-name", x: 8, y: top + 14}, partName(part)));
    for (let key = part.lowest + 1; key < part.highest; ++key) {
      if (key % 12 !== 0 && key % 12 !== 7) continue;
      lane.append(shape("line", {class: "guide", x1: GUTTER, x2: right, y1: yOf(key), y2: yOf(key)}),
                  shape("text", {class: "key-name", x: GUTTER - 6, y: yOf(key) + 3.5},
                        `${key % 12 ? "G" : "C"}${Math.floor(key / 12) - 1}`));
    }
    drawLevel(system, part, lane, rollEnd);
    for (const note of part.notes) {
      if (note.end <= system.start || note.start >= system.end) continue;
      lane.append(drawNote(system, part, note, yOf, rollEnd));
    }
    drawPitch(system, part, lane, yOf);
    return lane;
  }

  function drawNote(system, part, note, yOf, rollEnd) {
    const from = xAt(system, Math.max(note.start, system.start));
    const until = xAt(system, Math.min(note.end, system.end));
    const words = note.lyric.map((syllable) => `${written(syllable) || "–"} [${phonemesOf(syllable)}]`).join(" ");
    const group = shape("g", {class: "note"},
        shape("title", {}, `${words}\n${note.name}, ${clockText(note.start, 2)} to ${clockText(note.end, 2)}`),
        shape("rect", {x: from + 0.5, y: yOf(note.key) - KEY * 0.9, height: KEY * 1.8, rx: 3,
                       width: Math.max(until - from - 1, 1.5)}));
    group.note = note;
    for (const syllable of note.lyric) {
      if (syllable.start < system.start - 1e-6 || syllable.start >= system.end) continue;
      const x = xAt(system, syllable.start) + 1;
      const room = Math.min(syllable.room * system.scale, xAt(system, system.end) + RIGHT - x) - 3;
      const put = (name, y, text) => {
        if (!text) return;
        const made = shape("text", {class: name, x, y}, text);
        if (syllable.needs > room && room > 0 && textWidth(text, name === "syllable" ? "13px system-ui" : "10px monospace") > room) {
          made.setAttribute("textLength", room);
          made.setAttribute("lengthAdjust", "spacingAndGlyphs");
        }
        group.append(made);
      };
      if (syllable.text) put("syllable", rollEnd + 15, written(syllable));
      else group.append(shape("line", {class: "melisma", x1: x, x2: xAt(system, Math.min(syllable.end, system.end)) - 3,
                                       y1: rollEnd + 13, y2: rollEnd + 13}));
      put("phonemes", rollEnd + 29, phonemesOf(syllable));
    }
    return group;
  }

  function pointsWithin(system, part) {
    const first = Math.max(Math.ceil(system.start / part.step) - 1, 0);
    const last = Math.min(Math.ceil(system.end / part.step), part.level.length - 1);
    return {first, last};
  }
  const place = (x, y) => `${x.toFixed(1)} ${y.toFixed(1)}`;
  const clampX = (system, seconds) => xAt(system, Math.min(Math.max(seconds, system.start), system.end));

  function drawLevel(system, part, lane, rollEnd) {
    const {first, last} = pointsWithin(system, part);
    if (last <= first) return;
    let path = `M${place(clampX(system, first * part.step), rollEnd)}`;
    for (let i = first; i <= last; ++i) {
      const share = Math.min(Math.max(1 - part.level[i] / SOFTEST, 0), 1);
      path += `L${place(clampX(system, i * part.step), rollEnd - share * part.roll)}`;
    }
    path += `L${place(clampX(system, last * part.step), rollEnd)}Z`;
    lane.append(shape("path", {class: "level", d: path}));
  }

  function drawPitch(system, part, lane, yOf) {
    const {first, last} = pointsWithin(system, part);
    let path = "", before = null;
    for (let i = first; i <= last; ++i) {
      const seconds = i * part.step, key = part.pitch[i];
      if (key === null || seconds < system.start || seconds > system.end) {
        before = null;
        continue;
      }
      const shown = Math.min(Math.max(key, part.lowest - 0.5), part.highest + 0.5);
      path += (before === null || Math.abs(key - before) > 4 ? "M" : "L") + place(xAt(system, seconds), yOf(shown));
      before = key;
    }
    lane.append(shape("path", {class: "pitch", d: path}));
  }

  // ---- where the sound is ------------------------------------------------------------------------------------------

  let current = null, marked = [], lastTouch = 0;

  function showCursor() {
    const seconds = sound.now();
    const system = begunAt(systems, seconds);
    if (!system) return;
    const box = system.element;
    const x = box.offsetLeft + box.clientLeft + xAt(system, seconds) * box.clientWidth / width;
    const cursor = byId("cursor");
    cursor.style.transform = `translate(${x}px, ${box.offsetTop}px)`;
    cursor.style.height = `${box.offsetHeight}px`;
    if (system !== current) {
      current = system;
      if (sound.playing) follow(box);
    }
    showNotes(system, seconds);
    showPlace(seconds);
  }
  function showNotes(system, seconds) {
    const playing = sung.map((part) => begunAt(part.notes, seconds)).filter(
        (note) => note && note.start <= seconds && note.end > seconds);
    if (playing.length === marked.length && playing.every((note, i) => note === marked[i].note && marked[i].isConnected))
      return;
    for (const group of marked) group.classList.remove("now");
    marked = [...system.element.querySelectorAll(".note")].filter((group) => playing.includes(group.note));
    for (const group of marked) group.classList.add("now");
  }
  function showPlace(seconds) {
    const measure = begunAt(song.measures, seconds);
    const tempo = begunAt(song.tempos, seconds);
    let place = "";
    if (measure) {
      const beat = measure.beats.filter((start) => start <= seconds + 1e-6).length;
      place = `Bar ${measure.number}, beat ${Math.max(beat, 1)}`;
    }
    const line = sung.length ? begunAt(sung[0].lines, seconds) : null;
    byId("clock").textContent = `${clockText(seconds)} / ${clockText(duration)}`;
    byId("place").textContent = place;
    byId("tempo").textContent = tempo ? ` · ♩ = ${Math.round(tempo.quartersPerMinute)}` : "";
    const slider = byId("seek");
    slider.value = seconds;
    const spoken = [clockText(seconds), place, line && line.start <= seconds ? line.text : ""].filter(Boolean).join(", ");
    if (slider.getAttribute("aria-valuetext") !== spoken) slider.setAttribute("aria-valuetext", spoken);
  }
  function follow(box) {
    if (Date.now() - lastTouch < 4000) return; // somebody is looking elsewhere
    const sight = box.getBoundingClientRect();
    const top = byId("player").offsetHeight;
    if (sight.top >= top && sight.bottom <= innerHeight) return;
    const smooth = !matchMedia("(prefers-reduced-motion: reduce)").matches;
    scrollTo({top: scrollY + sight.top - top - 12, behavior: smooth ? "smooth" : "auto"});
  }

  function tick() {
    if (!sound.playing) return;
    if (sound.now() >= duration) pause();
    else {
      showCursor();
      requestAnimationFrame(tick);
    }
  }
  function showPlaying() {
    byId("play-shape").setAttribute("d", sound.playing ? "M3 1h4v14H3zM9 1h4v14H9z" : "M3 1l11 7-11 7z");
    byId("play-word").textContent = sound.playing ? "Pause" : "Play";
  }
  let changing = Promise.resolve();
  async function play() {
    try {
      await sound.play();
    } catch (error) {
      remark(`The sound cannot be played here: ${error.message}`);
    }
    showPlaying();
    tick();
  }
  function pause() {
    sound.pause();
    showPlaying();
    showCursor();
  }
  /** One after another: a second click may come while the sound is still being read. */
  const toggle = () => { if (sound.isThere) changing = changing.then(() => (sound.playing ? pause() : play())); };
  const seek = (seconds) => {
    changing = changing.then(async () => {
      const wasPlaying = sound.playing;
      if (wasPlaying) sound.pause();
      sound.position = Math.min(Math.max(seconds, 0), duration);
      if (wasPlaying) await play();
      else showCursor();
    });
  };

  function remark(text) {
    byId("remark").textContent = text;
    byId("remark").hidden = false;
  }

  // ---- everything together -----------------------------------------------------------------------------------------

  function listen() {
    byId("play").addEventListener("click", toggle);
    byId("seek").max = duration;
    byId("seek").addEventListener("input", (event) => seek(Number(event.target.value)));
    for (const [id, factor] of [["narrower", 0.8], ["wider", 1.25]])
      byId(id).addEventListener("click", () => {
        zoom = Math.min(Math.max(zoom * factor, 0.25), 4);
        layOut(byId("systems").clientWidth);
      });
    for (const touch of ["wheel", "touchmove"]) addEventListener(touch, () => (lastTouch = Date.now()), {passive: true});
    addEventListener("keydown", (event) => {
      if (event.ctrlKey || event.altKey || event.metaKey || event.target.closest("button, input, summary, .table")) return;
      const jumps = {ArrowLeft: () => sound.now() - 5, ArrowRight: () => sound.now() + 5, Home: () => 0, End: () => duration};
      if (event.key === " ") toggle();
      else if (jumps[event.key]) seek(jumps[event.key]());
      else return;
      event.preventDefault();
    });
    addEventListener("beforeprint", () => {
      layOut(PRINT_WIDTH);
      systems.forEach(draw);
    });
    addEventListener("afterprint", () => layOut(byId("systems").clientWidth));
    new ResizeObserver(() => {
      const now = byId("systems").clientWidth;
      if (now > 0 && now !== width && !matchMedia("print").matches) layOut(now);
    }).observe(byId("systems"));
  }

  writeTitle();
  writeParts();
  writeWords();
  measureParts();
  listen();
  showPlaying();
  byId("play").disabled = !sound.isThere;
  if (song.soundLeftOut) remark("The sound is too long to stand in a page; play the wave beside it.");
  else if (song.mix) remark("The song is long: its sound is here as a whole, and parts cannot be muted.");
})();
