// Workloads that run inside the page (passed as source to page.evaluate), each the counterpart of
// a native program: probeAnswers of tests/exchange/file_exchange.cc's answers, timingWorkload of
// frame_timing.cc. Both draw file_exchange's strokes, and are handed probePoint to draw them with
// (they run on their own in the page, so they cannot call it here).

// Point i of probe stroke `seed` of gesture 0 (circle), 1 (swipe), 2 (zigzag) or 3 ("V") into p,
// as tests/exchange/probe_strokes.h draws it.
export function probePoint(gesture, seed, i, p) {
  const wobble = (s, k) => Math.sin(12.9898 * s + 78.233 * k);
  const size = 0.25 * (1 + 0.15 * wobble(seed, 1));
  const cx = 0.05 * wobble(seed, 2), cy = 1.4 + 0.05 * wobble(seed, 3), cz = 0.45 + 0.05 * wobble(seed, 4);
  const t = i / 49;
  let x, y;
  if (gesture === 0) { x = Math.cos(2 * Math.PI * t); y = Math.sin(2 * Math.PI * t); }
  else if (gesture === 1) { x = -1 + 2 * t; y = 0.1 * Math.sin(Math.PI * t); }
  else if (gesture === 2) { x = 0.3 * Math.sin(6 * Math.PI * t); y = 1 - 2 * t; }
  else { x = -1 + 2 * t; y = Math.abs(x) * 1.5 - 0.75; }
  p[0] = cx + size * x + 0.003 * wobble(seed, 10 + 3 * i);
  p[1] = cy + size * y + 0.003 * wobble(seed, 11 + 3 * i);
  p[2] = cz + 0.003 * wobble(seed, 12 + 3 * i);
}

// The answer lines file_exchange writes for a loaded set: mode, probe, gesture, count, then the
// probabilities and similarities.
export function probeAnswers(gestures, mode, probePoint) {
  const head = [0, 1.7, 0], facing = [0, 0, 0, 1], p = new Float64Array(3);
  const lines = [];
  for (let probe = 0; probe < 12; probe++) {
    gestures.startStroke(head, facing, -1);
    for (let i = 0; i < 50; i++) {
      probePoint(probe % 4, 1000 + probe, i, p);
      gestures.contdStroke(p, facing);
    }
    const out = {};
    const got = gestures.endStroke(out);
    const numbers = out.probabilities.flatMap((q, g) => [q, out.similarities[g]]).map((v) => v.toPrecision(17));
    lines.push([mode, probe, got, out.probabilities.length, ...numbers].join(' '));
  }
  return lines;
}

// frame_timing.cc's workload through the module: microseconds a frame (contdStroke with
// contdIdentify, and with contdDetect) and for identification at the stroke's end.
export async function timingWorkload(mode, bytes, rounds, probePoint) {
  const { GestureRecognition } = await import('./zando/zando.js');
  const gestures = new GestureRecognition();
  gestures.loadFromBytes(bytes);
  const head = new Float64Array([0, 1.7, 0]), facing = new Float64Array([0, 0, 0, 1]), p = new Float64Array(3);
  const similarity = {}, detection = {}, result = {};
  const points = new Float64Array(12 * 50 * 3);
  for (let probe = 0; probe < 12; probe++) {
    for (let i = 0; i < 50; i++) probePoint(probe % 4, 1000 + probe, i, points.subarray((probe * 50 + i) * 3));
  }
  let identifyFrames = 0, detectFrames = 0, ends = 0, frameCount = 0, endCount = 0, correct = 0;
  for (let round = 0; round < rounds; round++) {
    for (let probe = 0; probe < 12; probe++) {
      for (let pass = 0; pass < 2; pass++) {
        gestures.startStroke(head, facing, -1);
        const start = performance.now();
        for (let i = 0; i < 50; i++) {
          const at = (probe * 50 + i) * 3;
          p[0] = points[at]; p[1] = points[at + 1]; p[2] = points[at + 2];
          gestures.setHostTime(round * 100 + probe * 2 + pass + i / 60);
          gestures.tryContdStroke(p, facing);
          if (pass === 0) gestures.tryContdIdentify(head, facing, similarity);
          else gestures.tryContdDetect(head, facing, detection);
        }
        const elapsed = performance.now() - start;
        if (pass === 0) {
          identifyFrames += elapsed;
          const end = performance.now();
          const got = gestures.endStroke(result);
          ends += performance.now() - end;
          endCount++;
          if (got === probe % 4) correct++;
        } else {
          detectFrames += elapsed;
          gestures.cancelStroke();
        }
      }
      frameCount += 50;
    }
  }
  gestures.dispose();
  const us = (ms, n) => +((1000 * ms) / n).toFixed(2);
  return { mode, frameIdentifyUs: us(identifyFrames, frameCount), frameDetectUs: us(detectFrames, frameCount), endStrokeUs: us(ends, endCount), correct, strokes: endCount };
}
