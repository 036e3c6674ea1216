/**
 * Cameras and growing files: waits for the server to say that there is more.
 *
 * @import {Session} from './types.js'
 * @import {Stage} from './stage.js'
 */
import { fetchSession } from './api.js';

/** Milliseconds between questions at least, so that an answer without news costs little. */
const pause = 250;

/**
 * The program may be one that ends with its last page, so a page waits even where nothing will come.
 *
 * @param {Stage} stage
 * @param {Session} session changed in place
 * @param {() => void} changed called when sources have changed
 */
export async function followLive(stage, session, changed) {
  let failures = 0;
  while (failures < 5) {
    try {
      const next = await fetchSession(session.revision);
      failures = 0;
      if (next.revision !== session.revision) {
        take(stage, session, next);
        changed();
      }
    } catch {
      failures += 1;
    }
    await new Promise((resolve) => setTimeout(resolve, pause * (1 + 3 * failures)));
  }
}

/** @param {Stage} stage @param {Session} session @param {Session} next */
function take({ store }, session, next) {
  const { source, frame } = store.state.settings;
  const before = session.sources[source];
  const now = next.sources[source];
  session.sources = next.sources;
  session.revision = next.revision;
  const last = now.first + now.frames - 1;
  // Who looks at the last frame goes on to the next one; one that is no longer kept cannot be looked at.
  if (now.frames > 0 && last !== frame && (frame < now.first || frame >= before.first + before.frames - 1)) {
    store.update({ settings: { ...store.state.settings, frame: last } });
  }
}
