"use strict";
// The lists are scripts that call the two functions of this object: a page that was opened from a file may
// load scripts, and nothing else that changes. Names reach the page as text only.
const quor3dGallery = (() => {
  const SPEEDS = [1, 2, 4, 6, 10, 15, 25];
  const HOURS = [1, 3, 6, 12, 24, 72];
  const DWELL_MS = 1000;
  const KEPT_PICTURES = 36;
  const byId = id => document.getElementById(id);

  const seriesById = new Map();   // id -> what the list says, and its pictures once they were loaded
  const tiles = new Map();        // id -> the elements of its tile
  const decoded = new Map();      // address -> promise of an image that can be shown, oldest use first
  let refreshSeconds = 5;
  let listed = 0;
  let chosen = null;
  let frames = [];                // the pictures of the loop
  let index = -1;
  let playing = false;
  let playTimer = 0;
  let speed = 2;
  let shownAddress = "";
  let drawing = null;             // promise of the picture that is wanted
  let failures = 0;

  // Times ---------------------------------------------------------------------------------------------

  function parts(time) {
    return [2000 + Number(time.slice(0, 2)), Number(time.slice(2, 4)), Number(time.slice(4, 6)),
            Number(time.slice(6, 8)), Number(time.slice(8, 10)), Number(time.slice(10, 12))];
  }
  function seconds(time) {
    const [year, month, day, hour, minute, second] = parts(time);
    return Date.UTC(year, month - 1, day, hour, minute, second) / 1000;
  }
  function readable(time) {
    const [year, ...rest] = parts(time).map(part => String(part).padStart(2, "0"));
    return `${year}-${rest[0]}-${rest[1]} ${rest[2]}:${rest[3]}:${rest[4]}`;
  }
  function ago(milliseconds) {
    const minutes = Math.max(0, Math.floor((Date.now() - milliseconds) / 60000));
    if (minutes < 1) return "less than a minute ago";
    if (minutes < 120) return `${minutes} min ago`;
    return minutes < 2880 ? `${Math.floor(minutes / 60)} h ago` : `${Math.floor(minutes / 1440)} days ago`;
  }

  // Lists ---------------------------------------------------------------------------------------------

  function load(path) {
    return new Promise((resolve, reject) => {
      const script = document.createElement("script");
      script.src = `${path}?${Date.now().toString(36)}`;
      script.onload = () => { script.remove(); resolve(); };
      script.onerror = () => { script.remove(); reject(new Error(path)); };
      document.head.append(script);
    });
  }

  async function refresh() {
    try {
      await load("gallery/latest.js");
      const series = chosen && seriesById.get(chosen);
      if (series && series.loaded !== series.version) await load(`gallery/series/${chosen}.js`);
      failures = 0;
    } catch (error) {
      ++failures;
    }
    showStatus();
  }

  function poll() {
    const next = () => { window.setTimeout(poll, 1000 * refreshSeconds); };
    if (document.hidden) next(); else refresh().then(next);
  }

  function latest(list) {
    refreshSeconds = Math.max(1, list.refresh);
    listed = list.newest;
    byId("title").textContent = document.title = list.title;
    const kept = new Set();
    for (const entry of list.series) {
      kept.add(entry.id);
      seriesById.set(entry.id, Object.assign(seriesById.get(entry.id) || {pictures: null, loaded: ""}, entry));
    }
    for (const id of [...seriesById.keys()]) if (!kept.has(id)) seriesById.delete(id);
    showTiles(list.series);
    if (!seriesById.has(chosen)) {
      chosen = null;
      const first = list.series.find(entry => entry.configuration === "Z") || list.series[0];
      choose(fromAddress() || (first && first.id));
    } else {
      fillChoice();
    }
    byId("viewer").hidden = byId("latest").hidden = list.series.length === 0;
  }

  function series(list) {
    const entry = seriesById.get(list.id);
    if (!entry) return;
    entry.loaded = list.version;
    entry.pictures = list.pictures.map(([time, stamp, path]) => ({
      time, seconds: seconds(time), path: path || list.before + time + list.after, stamp}));
    for (const picture of entry.pictures) picture.address = `${picture.path}?${picture.stamp}`;
    if (list.id === chosen) fillFrames();
  }

  // What is shown -------------------------------------------------------------------------------------

  function option(value, text) {
    const element = document.createElement("option");
    element.value = value;
    element.textContent = text;
    return element;
  }
  function fill(select, values, selected, text = value => value) {
    const current = [...select.options].map(element => element.value);
    if (current.length !== values.length || current.some((value, i) => value !== String(values[i]))) {
      select.replaceChildren(...values.map(value => option(value, text(value))));
    }
    select.value = selected;
  }
  const unique = values => [...new Set(values)];
  const all = () => [...seriesById.values()];

  function fillChoice() {
    const now = seriesById.get(chosen);
    if (!now) return;
    const ofSite = all().filter(entry => entry.site === now.site);
    const ofBoth = ofSite.filter(entry => entry.configuration === now.configuration);
    fill(byId("site"), unique(all().map(entry => entry.site)), now.site);
    fill(byId("configuration"), unique(ofSite.map(entry => entry.configuration)), now.configuration);
    byId("viewlabel").hidden = all().every(entry => !entry.view);
    fill(byId("view"), unique(ofBoth.map(entry => entry.view)), now.view, view => view || "First view");
    for (const [id, tile] of tiles) tile.button.setAttribute("aria-current", String(id === chosen));
  }

  function chooseFromForm(changed) {
    const wanted = ["site", "configuration", "view"].map(name => byId(name).value);
    // What was changed counts, the rest as far as there is such a series.
    const fits = all().filter(entry => entry[changed] === byId(changed).value)
      .filter(entry => changed === "site" || entry.site === wanted[0]);
    const score = entry => 2 * (entry.configuration === wanted[1]) + (entry.view === wanted[2]);
    fits.sort((a, b) => score(b) - score(a));
    if (fits.length) choose(fits[0].id);
  }

  function choose(id) {
    const entry = seriesById.get(id);
    if (!entry || id === chosen) return;
    chosen = id;
    frames = [];
    index = -1;
    fillChoice();
    history.replaceState(null, "", "#" + [entry.site, entry.configuration, entry.view].map(encodeURIComponent).join("/"));
    if (entry.pictures) fillFrames();
    if (entry.loaded !== entry.version) load(`gallery/series/${id}.js`).catch(() => { ++failures; showStatus(); });
  }

  function fromAddress() {
    let names;
    try {
      names = location.hash.slice(1).split("/").map(decodeURIComponent);
    } catch (error) {
      return null;
    }
    const found = all().find(entry => entry.site === names[0] && entry.configuration === names[1] &&
                                      entry.view === (names[2] || ""));
    return found && found.id;
  }

  function fillFrames() {
    const pictures = seriesById.get(chosen).pictures;
    const atEnd = index < 0 || index === frames.length - 1;
    const time = index >= 0 ? frames[index].time : "";
    const hours = Number(byId("window").value);
    const from = hours && pictures.length ? pictures[pictures.length - 1].seconds - 3600 * hours : -Infinity;
    frames = pictures.filter(picture => picture.seconds >= from);
    let at = frames.length - 1;
    if (!atEnd) {
      const same = frames.findIndex(picture => picture.time >= time);
      at = same < 0 ? frames.length - 1 : same;
    }
    byId("slider").max = Math.max(0, frames.length - 1);
    show(at);
  }

  function picture(address) {
    let promise = decoded.get(address);
    if (promise) {
      decoded.delete(address);
    } else {
      const image = new Image();
      image.src = address;
      promise = image.decode().then(() => image);
    }
    decoded.set(address, promise);
    if (decoded.size > KEPT_PICTURES) decoded.delete(decoded.keys().next().value);
    return promise;
  }

  function show(wanted) {
    index = frames.length ? Math.min(Math.max(wanted, 0), frames.length - 1) : -1;
    if (index < 0) {
      byId("stage").replaceChildren();
      byId("time").textContent = byId("position").textContent = shownAddress = "";
      return Promise.resolve();
    }
    const frame = frames[index];
    byId("slider").value = index;
    byId("slider").setAttribute("aria-valuetext", readable(frame.time));
    byId("time").textContent = readable(frame.time);
    byId("position").textContent = `${index + 1} of ${frames.length}`;
    byId("original").href = frame.path;
    if (!drawing) drawing = draw().finally(() => { drawing = null; });
    return drawing;
  }

  // One picture is loaded at a time, and then the one that is wanted by then: a slider that is drawn over a
  // thousand pictures loads a few of them.
  async function draw() {
    while (index >= 0 && frames[index].address !== shownAddress) {
      const frame = frames[index];
      const {site, configuration, view} = seriesById.get(chosen) || {};
      let element;
      try {
        element = await picture(frame.address);
        element.alt = [site, configuration, view, readable(frame.time)].filter(Boolean).join(" ");
      } catch (error) {
        decoded.delete(frame.address);
        element = document.createElement("p");
        element.textContent = "This picture cannot be shown.";
      }
      if (index < 0) return;
      shownAddress = frame.address;
      byId("stage").replaceChildren(element);
    }
    if (index >= 0 && index + 1 < frames.length) picture(frames[index + 1].address).catch(() => {});
  }

  // Tiles ---------------------------------------------------------------------------------------------

  function makeTile(id) {
    const button = document.createElement("button");
    button.type = "button";
    button.className = "tile";
    const image = document.createElement("img");
    image.loading = "lazy";
    image.decoding = "async";
    image.alt = "";
    const name = document.createElement("span");
    name.className = "name";
    const when = document.createElement("span");
    when.className = "when";
    button.append(image, name, when);
    button.addEventListener("click", () => {
      choose(id);
      show(frames.length - 1);
      byId("viewer").scrollIntoView({behavior: "smooth"});
    });
    return {button, image, name, when};
  }

  function showTiles(list) {
    const shown = [];
    for (const entry of list) {
      const tile = tiles.get(entry.id) || makeTile(entry.id);
      tiles.set(entry.id, tile);
      shown.push(tile.button);
      tile.name.textContent = [entry.site, entry.configuration, entry.view].filter(Boolean).join(" · ");
      tile.when.textContent = readable(entry.time);
      if (entry.preview && tile.image.getAttribute("src") !== entry.preview) tile.image.src = entry.preview;
    }
    for (const id of [...tiles.keys()]) if (!seriesById.has(id)) tiles.delete(id);
    const box = byId("tiles");
    if (shown.length !== box.children.length || shown.some((tile, i) => tile !== box.children[i])) {
      box.replaceChildren(...shown);
    }
  }

  function showStatus() {
    const status = byId("status");
    status.classList.toggle("old", failures > 0);
    if (failures > 0) {
      status.textContent = "The list of pictures cannot be loaded; shown is what was there.";
    } else {
      status.textContent = listed ? `Newest picture written ${ago(listed)}` : "There are no pictures yet.";
    }
  }

  // Motion --------------------------------------------------------------------------------------------

  function setPlaying(on) {
    playing = on && frames.length > 1;
    byId("play").setAttribute("aria-pressed", String(playing));
    window.clearTimeout(playTimer);
    if (playing) step();
  }

  async function step() {
    const began = performance.now();
    const atEnd = index >= frames.length - 1;
    await show(atEnd ? 0 : index + 1);
    if (!playing) return;
    const dwell = index === frames.length - 1 ? DWELL_MS : 0;
    playTimer = window.setTimeout(step, Math.max(0, 1000 / SPEEDS[speed] - (performance.now() - began)) + dwell);
  }

  function go(to) {
    setPlaying(false);
    show(to);
  }

  function setSpeed(to) {
    speed = Math.min(Math.max(to, 0), SPEEDS.length - 1);
    byId("speed").value = String(speed);
  }

  const KEYS = {
    ArrowLeft: () => go(index - 1),
    ArrowRight: () => go(index + 1),
    PageUp: () => go(index - 10),
    PageDown: () => go(index + 10),
    Home: () => go(0),
    End: () => go(frames.length - 1),
    " ": () => setPlaying(!playing),
    "+": () => setSpeed(speed + 1),
    "-": () => setSpeed(speed - 1),
  };

  function start() {
    byId("window").replaceChildren(...HOURS.map(hours => option(hours, hours === 1 ? "1 hour" : `${hours} hours`)),
                                   option(0, "everything"));
    byId("window").value = "0";
    byId("speed").replaceChildren(...SPEEDS.map((rate, i) => option(i, `${rate} a second`)));
    setSpeed(speed);
    for (const name of ["site", "configuration", "view"]) {
      byId(name).addEventListener("change", () => chooseFromForm(name));
    }
    byId("choice").addEventListener("submit", event => event.preventDefault());
    byId("window").addEventListener("change", () => chosen && seriesById.get(chosen).pictures && fillFrames());
    byId("speed").addEventListener("change", () => setSpeed(Number(byId("speed").value)));
    byId("slider").addEventListener("input", () => go(Number(byId("slider").value)));
    byId("first").addEventListener("click", KEYS.Home);
    byId("back").addEventListener("click", KEYS.ArrowLeft);
    byId("forward").addEventListener("click", KEYS.ArrowRight);
    byId("last").addEventListener("click", KEYS.End);
    byId("play").addEventListener("click", KEYS[" "]);
    document.addEventListener("keydown", event => {
      const target = event.target;
      const typed = target.tagName === "SELECT" || event.ctrlKey || event.altKey || event.metaKey;
      const pressesButton = event.key === " " && (target.tagName === "BUTTON" || target.tagName === "A");
      if (typed || pressesButton || !KEYS[event.key] || byId("viewer").hidden) return;
      event.preventDefault();
      KEYS[event.key]();
    });
    document.addEventListener("visibilitychange", () => { if (!document.hidden) refresh(); });
    window.addEventListener("hashchange", () => choose(fromAddress()));
    poll();
  }

  start();
  return {latest, series};
})();
