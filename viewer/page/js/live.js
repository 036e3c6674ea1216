/**
 * Cameras, streams and growing files: waits for the server to say that there is more.
 *
 * @import {Session, Settings} from './types.js'
 * @import {Stage} from './stage.js'
 */
import { fetchSession } from './api.js';
import { isFollowing, newestFrame } from './sequence.js';
import { say } from './status.js';

/** Milliseconds between questions at least, so that an answer without news costs little. */
const pause = 250;
/** Where the newest frame is followed: as it comes, but not before the last one is shown, if that takes no longer. */
const livePause = 30;
const longestPause = 1000;

/** @param {number} milliseconds */
const sleep = (milliseconds) => new Promise((resolve) => setTimeout(resolve, milliseconds));

/**
 * The program may be one that ends with its last page, so a page waits even where nothing will come.
 *
 * @param {Stage} stage
 * @param {Session} session changed in place
 * @param {{changed: () => void, forget: (source: number) => void}} told when sources have changed, and of a source whose
 *   frames are others now
 */
export async function followLive(stage, session, told) {
  let failures = 0;
  while (failures < 5) {
    try {
      const next = await fetchSession(session.revision);
      failures = 0;
      if (next.revision !== session.revision) {
        take(stage, session, next, told.forget);
        told.changed();
      }
    } catch {
      failures += 1;
    }
    const { settings } = stage.store.state;
    const begin = performance.now();
    await sleep(isFollowing(session, settings) ? livePause : pause * (1 + 3 * failures));
    while (!stage.frames.hasCome(settings) && performance.now() - begin < longestPause) {
      await sleep(livePause);
    }
  }
}

/** @param {Stage} stage @param {Session} session @param {Session} next @param {(source: number) => void} forget */
function take({ store, frames: kept }, session, next, forget) {
  const before = session.sources;
  const { settings, other, mode } = store.state;
  const wasLast = [settings, other].map((side) => side.frame >= newestFrame(session, side));
  session.sources = next.sources;
  session.revision = next.revision;
  // Nothing was there, a frame was not whole, or what was there has been replaced.
  const replaced = before.map(({ kind, live, first, frames }, i) => {
    const now = next.sources[i];
    const changed = live !== now.live || frames !== now.frames;
    return now.frames > 0 && (frames === 0 || now.first + now.frames < first + frames || (kind === 'file' && changed && kept.hasFailed(i)));
  });
  replaced.forEach((is, i) => is && forget(i));
  /** Who looks at the last frame goes on to the next one; one that is no longer kept cannot be looked at. @param {Settings} side @param {number} i */
  const followed = (side, i) => {
    const { first, frames } = session.sources[side.source];
    const newest = newestFrame(session, side);
    if (frames === 0 || (!replaced[side.source] && (side.frame === newest || (!wasLast[i] && side.frame >= first)))) {
      return side;
    }
    if (!wasLast[i] && side.frame < first && (i === 0 || mode === 'compare')) {
      say(`Frame ${side.frame} is not kept any more; this is the newest. --memory keeps more.`);
    }
    return { ...side, frame: wasLast[i] || side.frame < first ? newest : Math.min(newest, side.frame) };
  };
  const a = followed(settings, 0);
  const b = other === settings ? a : followed(other, 1);
  if (a !== settings || b !== other) {
    store.update({ settings: a, other: b });
  }
}
