/**
 * Plays the frames: the next one is asked for when the last one has been painted, so that slow ones are not skipped over.
 *
 * @import {Session} from './types.js'
 * @import {Stage} from './stage.js'
 */
import { frameAt, frameCount, isFollowing, placeOf } from './sequence.js';

/** Milliseconds between frames. */
const pace = 40;

/**
 * @param {Stage} stage
 * @param {Session} session
 */
export function play(stage, session) {
  const { store } = stage;
  let due = 0;
  /** @type {ReturnType<typeof setTimeout> | undefined} */
  let timer;

  const advance = () => {
    timer = undefined;
    // At the newest frame of what sends more, the next one comes by itself.
    if (store.state.playing && !isFollowing(session, store.edited)) {
      const next = (placeOf(session, store.edited) + 1) % frameCount(session);
      due = performance.now() + pace;
      store.edit(frameAt(session, next));
    }
  };
  stage.afterPaint.push(() => {
    if (store.state.playing && timer === undefined) {
      const frame = stage.frames.find(store.edited);
      if (frame && (frame.overview || frame.error !== null)) {
        timer = setTimeout(advance, Math.max(0, due - performance.now()));
      }
    }
  });
  store.subscribe((state, before) => {
    if (state.playing !== before.playing) {
      stage.wish();
      stage.invalidate();
    }
  });
}
