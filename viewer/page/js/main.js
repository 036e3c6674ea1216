/** Starts the page: what there is, the tables, then everything that shows it. */
import { fetchSession, fetchTables } from './api.js';
import { ColourTables, TableMaker } from './colours.js';
import { followKeys, makeCommands } from './commands.js';
import { connectControls } from './controls.js';
import { byId } from './elements.js';
import { fillHelp } from './help.js';
import { linkText, stateFromLink } from './link.js';
import { followLive } from './live.js';
import { showPixelValues } from './pixel_readout.js';
import { play } from './playback.js';
import { followPointers } from './pointer.js';
import { showRegion } from './region_panel.js';
import { saveNumbers, savePicture, saveScreen } from './save.js';
import { isNumbered, shortNames } from './sequence.js';
import { showSeries } from './series_panel.js';
import { Stage } from './stage.js';
import { initialState, Store } from './state.js';
import { say, showStatus } from './status.js';
import { applyTheme, followTheme, switchTheme } from './theme.js';

applyTheme();

/** @param {string} path */
const shortName = (path) => path.replace(/.*[\\/]/, '');

async function start() {
  const [session, encoded] = await Promise.all([fetchSession(), fetchTables()]);
  const tables = new TableMaker(new ColourTables(encoded));
  const [address, option] = location.hash.slice(1).split('!');
  const first = initialState(session, matchMedia('(max-width: 760px)').matches);
  const store = new Store({ ...first, ...(address ? stateFromLink(address, session, first) : {}) });

  /** @param {import('./types.js').Settings} settings */
  const nameOf = (settings) => {
    return [
      isNumbered(session.sources[settings.source]) ? `frame ${settings.frame}` : '',
      `layout ${settings.layout}°`,
      settings.calibration ? shortName(session.calibrations[settings.calibration]) : '',
      session.planes[settings.plane] ?? '',
      shortNames(session)[settings.source],
    ].filter(Boolean).join(', ');
  };
  /** What a saved picture is called. @param {string} what */
  const fileName = (what) => {
    const { source, frame, plane } = store.edited;
    const { name, kind } = session.sources[source];
    return [
      (kind === 'file' ? shortName(name).replace(/\.[^.]*$/, '') : name).replace(/[^\w.-]/g, '_'),
      isNumbered(session.sources[source]) ? String(frame).padStart(6, '0') : '',
      what,
      session.planes[plane]?.toLowerCase() ?? '',
    ].filter(Boolean).join('_') + '.png';
  };
  const stage = new Stage(store, session, tables, nameOf, option);
  document.documentElement.dataset.painter = stage.painter.name;

  const values = showPixelValues(stage);
  const region = showRegion(stage);
  const series = showSeries(stage, session);
  const redraw = () => {
    region.redraw();
    series.redraw();
  };
  /** @param {Promise<void>} work */
  const tried = (work) => {
    work.catch((failure) => say(failure instanceof Error ? failure.message : String(failure)));
  };
  const help = byId('help-dialog', HTMLDialogElement);
  const actions = {
    help: () => (help.open ? actions.close() : help.showModal()),
    close: () => {
      help.close();
      // The closed list would keep the focus, and with it the next key, until the next picture.
      if (document.activeElement instanceof HTMLElement && help.contains(document.activeElement)) {
        document.activeElement.blur();
      }
    },
    theme: () => {
      switchTheme();
      redraw();
    },
    link: () => {
      writeLink();
      navigator.clipboard.writeText(location.href).then(() => say('The link is copied.'), () => say(`The link: ${location.href}`));
    },
    picture: () => tried(savePicture(stage, fileName)),
    screen: () => tried(saveScreen(stage, fileName('view'))),
    numbers: () => tried(saveNumbers(stage, /** @type {'npy' | 'csv'} */ (byId('number-format', HTMLSelectElement).value))),
    /** @param {import('./types.js').Point} pixel */
    series: (pixel) => tried(series.show(pixel)),
  };
  const controls = connectControls(stage, session, actions);
  const commands = makeCommands(stage, session, actions);
  followKeys(commands);
  fillHelp(commands);
  followPointers(stage, store, (pixel) => actions.series(pixel));
  showStatus(stage, session);
  play(stage, session);
  followTheme(redraw);
  byId('help-close', HTMLButtonElement).addEventListener('click', actions.close);

  let written = location.hash;
  function writeLink() {
    // Another link has been entered and is about to be followed.
    if (location.hash !== written) {
      return;
    }
    history.replaceState(null, '', `#${linkText(store.state, session)}${option ? `!${option}` : ''}`);
    written = location.hash;
  }
  /** @type {ReturnType<typeof setTimeout> | undefined} */
  let writing;
  store.subscribe(() => {
    clearTimeout(writing);
    document.documentElement.dataset.link = 'late';
    writing = setTimeout(() => {
      writeLink();
      document.documentElement.dataset.link = 'written';
    }, 250);
  });
  addEventListener('hashchange', () => {
    if (location.hash !== written) {
      written = location.hash;
      store.update(stateFromLink(written.slice(1).split('!')[0], session, store.state));
    }
  });

  const check = () => {
    const failed = session.sources.find(({ error }) => error !== null);
    const unreadable = byId('unreadable', HTMLElement);
    unreadable.textContent = failed?.error ?? '';
    unreadable.hidden = !failed;
  };
  check();
  followLive(stage, session, {
    changed: () => {
      controls.sourcesChanged();
      series.sourcesChanged();
      check();
    },
    forget: (source) => {
      stage.frames.forget(source);
      values.tiles.clear();
    },
  });
}

start().catch((failure) => {
  const unreadable = byId('unreadable', HTMLElement);
  unreadable.textContent = failure instanceof Error ? failure.message : String(failure);
  unreadable.hidden = false;
});
