/**
 * The controls around the stage: each shows a part of the state and changes it.
 *
 * @import {Actions} from './commands.js'
 * @import {Session, MapName, Style} from './types.js'
 * @import {Stage} from './stage.js'
 */
import { origins, scaleEnds } from './commands.js';
import { byId, make } from './elements.js';
import { layouts, polarizerAt } from './mosaic.js';
import { allKinds, panelKinds } from './panel_kinds.js';
import { firstFrame, firstNumber, frameAt, frameCount, isFollowing, newestFrame, placeOf, shortNames } from './sequence.js';

/**
 * A row of buttons of which one is pressed.
 *
 * @param {string} id of its element
 * @param {{label: string, content: (Node | string)[]}[]} choices
 * @param {(choice: number) => void} choose
 * @returns {(pressed: number) => void} shows which one is
 */
function choiceRow(id, choices, choose) {
  const buttons = choices.map(({ label, content }, i) => {
    const button = make('button', { type: 'button', 'aria-pressed': 'false', title: label, 'aria-label': label }, content);
    button.addEventListener('click', () => choose(i));
    return button;
  });
  byId(id, HTMLElement).replaceChildren(...buttons);
  return (pressed) => buttons.forEach((button, i) => button.setAttribute('aria-pressed', String(i === pressed)));
}

/** A layout's 2 x 2 polarizers as a picture. @param {number} layout */
function layoutIcon(layout) {
  const space = 'http://www.w3.org/2000/svg';
  const icon = document.createElementNS(space, 'svg');
  icon.setAttribute('viewBox', '0 0 20 20');
  icon.setAttribute('aria-hidden', 'true');
  for (const [x, y] of [[0, 0], [1, 0], [0, 1], [1, 1]]) {
    const angle = (polarizerAt({ layout, origin: [0, 0] }, x, y) * Math.PI) / 180;
    const [across, up] = [Math.cos(angle) * 3.4, Math.sin(angle) * 3.4];
    const line = document.createElementNS(space, 'line');
    for (const [name, value] of Object.entries({ x1: 5 + 10 * x - across, y1: 5 + 10 * y + up, x2: 5 + 10 * x + across, y2: 5 + 10 * y - up })) {
      line.setAttribute(name, value.toFixed(2));
    }
    icon.append(line);
  }
  return icon;
}

/**
 * @param {HTMLSelectElement} select
 * @param {[string, string][]} options value and text
 */
function fill(select, options) {
  select.replaceChildren(...options.map(([value, text]) => make('option', { value }, [text])));
}

/** @param {number} share */
const percent = (share) => (share === 0 ? 'automatic' : `${Number((share * 100).toPrecision(3))} %`);

/**
 * @param {Stage} stage
 * @param {Session} session
 * @param {Actions} actions
 */
export function connectControls(stage, session, actions) {
  const { store } = stage;
  const source = byId('source', HTMLSelectElement);
  const slider = byId('frame', HTMLInputElement);
  const number = byId('frame-number', HTMLInputElement);
  const calibration = byId('calibration', HTMLSelectElement);
  const depth = byId('depth', HTMLSelectElement);
  const plane = byId('plane', HTMLSelectElement);
  const style = byId('style', HTMLSelectElement);
  const degreeEnd = byId('degree-end', HTMLSelectElement);
  const powerEnd = byId('power-end', HTMLSelectElement);
  const degreeMap = byId('degree-map', HTMLSelectElement);
  const lightMap = byId('light-map', HTMLSelectElement);

  fill(depth, [['0', 'as the file says'], ...[8, 10, 12, 14, 16].map((bits) => /** @type {[string, string]} */ ([String(bits), `${bits} bits`]))]);
  fill(calibration, session.calibrations.map((name, i) => [String(i), name]));
  fill(plane, session.planes.map((name, i) => [String(i), name]));
  byId('plane-field', HTMLElement).hidden = session.planes.length === 0;
  fill(degreeEnd, scaleEnds.map((end) => [String(end), end === 0 ? 'automatic' : String(end)]));
  fill(powerEnd, scaleEnds.map((end) => [String(end), percent(end)]));

  const pressLayout = choiceRow('layout', layouts.map((layout) => ({
    label: `Layout ${layout}: ${[0, 1, 2, 3].map((i) => polarizerAt({ layout, origin: [0, 0] }, i & 1, i >> 1)).join(', ')} degrees`,
    content: [layoutIcon(layout), String(layout)],
  })), (i) => store.edit({ layout: layouts[i] }));
  const pressOrigin = choiceRow('origin', origins.map(([x, y]) => ({ label: `Origin ${x},${y} on the sensor`, content: [`${x},${y}`] })),
    (i) => store.edit({ origin: origins[i] }));
  choiceRow('panel-choice', allKinds.map((kind) => ({ label: panelKinds[kind].title, content: [panelKinds[kind].short] })), (i) => {
    const { panels, mode, alone } = store.state;
    const kind = allKinds[i];
    if (mode !== 'panels' || alone) {
      store.update({ active: kind });
      return;
    }
    const next = allKinds.filter((one) => (one === kind ? !panels.includes(one) : panels.includes(one)));
    store.update({ panels: next.length > 0 ? next : panels });
  });
  const panelButtons = [...byId('panel-choice', HTMLElement).querySelectorAll('button')];

  const listSources = () => {
    const names = shortNames(session);
    fill(source, session.sources.map(({ frames }, i) => [String(i), frames > 1 ? `${names[i]} (${frames})` : names[i]]));
    const count = frameCount(session);
    slider.max = String(count - 1);
    number.min = String(firstNumber(session));
    number.max = String(firstNumber(session) + count - 1);
    byId('frame-count', HTMLElement).textContent = `of ${number.min} to ${number.max}`;
    byId('timeline', HTMLElement).hidden = count < 2;
  };

  const show = () => {
    const { state } = store;
    const { layout, origin, calibration: used, bitDepth, plane: colour } = store.edited;
    const place = placeOf(session, store.edited);
    source.value = String(store.edited.source);
    source.title = session.sources[store.edited.source].name;
    slider.value = String(place);
    slider.setAttribute('aria-valuetext', `frame ${place + 1} of ${frameCount(session)}`);
    if (document.activeElement !== number) {
      number.value = String(firstNumber(session) + place);
    }
    pressLayout(layouts.findIndex((one) => one === layout));
    pressOrigin(origins.findIndex(([x, y]) => x === (origin[0] & 1) && y === (origin[1] & 1)));
    panelButtons.forEach((button, i) => {
      const kind = allKinds[i];
      const pressed = state.mode !== 'panels' || state.alone ? kind === state.active : state.panels.includes(kind);
      button.setAttribute('aria-pressed', String(pressed));
    });
    calibration.value = String(used);
    depth.value = String(bitDepth);
    plane.value = String(colour);
    style.value = state.style;
    showEnd(degreeEnd, state.degreeEnd);
    showEnd(powerEnd, state.powerEnd);
    degreeMap.value = state.degreeMap;
    lightMap.value = state.lightMap;
    byId('live', HTMLElement).hidden = !session.sources[store.edited.source].live;
    byId('live', HTMLElement).setAttribute('aria-pressed', String(isFollowing(session, store.edited)));
    byId('play', HTMLElement).setAttribute('aria-pressed', String(state.playing));
    byId('candidates', HTMLElement).setAttribute('aria-pressed', String(state.mode === 'candidates'));
    byId('compare', HTMLElement).setAttribute('aria-pressed', String(state.mode === 'compare'));
    byId('alone', HTMLElement).setAttribute('aria-pressed', String(state.alone));
    byId('lines', HTMLElement).setAttribute('aria-pressed', String(state.lines));
    byId('select', HTMLElement).setAttribute('aria-pressed', String(state.selecting));
    byId('side', HTMLElement).hidden = state.mode !== 'compare';
    byId('side', HTMLElement).textContent = `Controls: ${state.side.toUpperCase()}`;
  };
  /** An end that a link or an option has set is one more choice. @param {HTMLSelectElement} select @param {number} end */
  const showEnd = (select, end) => {
    if (![...select.options].some(({ value }) => Number(value) === end)) {
      select.append(make('option', { value: String(end) }, [select === powerEnd ? percent(end) : String(end)]));
    }
    select.value = String(end);
  };

  source.addEventListener('change', () => store.edit({ source: Number(source.value), frame: firstFrame(session.sources[Number(source.value)]) }));
  slider.addEventListener('input', () => store.edit(frameAt(session, Number(slider.value))));
  number.addEventListener('change', () => store.edit(frameAt(session, (Math.trunc(Number(number.value)) || 0) - firstNumber(session))));
  calibration.addEventListener('change', () => store.edit({ calibration: Number(calibration.value) }));
  depth.addEventListener('change', () => store.edit({ bitDepth: Number(depth.value) }));
  plane.addEventListener('change', () => store.edit({ plane: Number(plane.value) }));
  style.addEventListener('change', () => store.update({ style: /** @type {Style} */ (style.value) }));
  degreeEnd.addEventListener('change', () => store.update({ degreeEnd: Number(degreeEnd.value) }));
  powerEnd.addEventListener('change', () => store.update({ powerEnd: Number(powerEnd.value) }));
  degreeMap.addEventListener('change', () => store.update({ degreeMap: /** @type {MapName} */ (degreeMap.value) }));
  lightMap.addEventListener('change', () => store.update({ lightMap: /** @type {MapName} */ (lightMap.value) }));

  /** @type {Record<string, () => void>} */
  const buttons = {
    play: () => store.update({ playing: !store.state.playing }),
    previous: () => store.edit(frameAt(session, placeOf(session, store.edited) - 1)),
    next: () => store.edit(frameAt(session, placeOf(session, store.edited) + 1)),
    live: () => {
      const { first } = session.sources[store.edited.source];
      const newest = newestFrame(session, store.edited);
      store.edit({ frame: isFollowing(session, store.edited) ? Math.max(first, newest - 1) : newest });
    },
    candidates: () => store.update({ mode: store.state.mode === 'candidates' ? 'panels' : 'candidates' }),
    compare: () => store.update(store.state.mode === 'compare' ? { mode: 'panels', side: 'a' } : { mode: 'compare', side: 'b' }),
    side: () => store.update({ side: store.state.side === 'a' ? 'b' : 'a' }),
    alone: () => store.update({ alone: !store.state.alone }),
    lines: () => store.update({ lines: !store.state.lines }),
    select: () => store.update({ selecting: !store.state.selecting }),
    whole: () => store.update({ view: null }),
    theme: actions.theme,
    help: actions.help,
    'save-picture': actions.picture,
    'save-screen': actions.screen,
    'save-numbers': actions.numbers,
    'copy-link': actions.link,
  };
  for (const [id, run] of Object.entries(buttons)) {
    byId(id, HTMLButtonElement).addEventListener('click', run);
  }
  store.subscribe(show);
  listSources();
  show();
  return { sourcesChanged: () => { listSources(); show(); } };
}
