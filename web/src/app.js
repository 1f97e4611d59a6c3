// The gesture page: strokes drawn with a mouse, a pen or a WebXR controller go into one
// GestureRecognition object, as samples of the selected gesture or to be identified. The head is
// fixed at the camera (1.6 m up, looking along -Z); a pointer stroke is lifted onto a plane half
// a metre in front of it.
import * as THREE from 'three';
import { init, GestureRecognition, ZandoError } from './zando/zando.js';

const kHead = [0, 1.6, 0];
const kFacing = [0, 0, 0, 1];
const kDrawingDistance = 0.5;
const kColours = ['#f97316', '#22c55e', '#3b82f6', '#e11d48', '#a855f7', '#eab308', '#14b8a6', '#f472b6'];

const $ = (id) => document.getElementById(id);
const ui = {
  hint: $('hint'), message: $('message'), name: $('gesture-name'), list: $('gestures'), enhanced: $('enhanced'),
  train: $('train'), seconds: $('train-seconds'), progress: $('train-progress'), trainStatus: $('train-status'),
  result: $('result'), probabilities: $('probabilities'), save: $('save'), load: $('load'), clear: $('clear'),
  enterVr: $('enter-vr'), canvas: $('scene'),
};

// What the tests and a curious developer can read: the object, and counts of what happened.
const state = {
  gestures: null, selected: -1, drawing: false, training: false, progressEvents: 0, strokesEnded: 0,
  lastGesture: null, lastResult: null, frames: 0, errors: 0,
};
window.zandoPage = state;

function show(text, kind = 'info') {
  ui.message.textContent = text;
  ui.message.className = text ? kind : '';
}

// Every handler reports its failure on the page: a ZandoError by the code's meaning, anything
// else as it is. Nothing escapes to the console.
const explanations = {
  NoGestures: 'There is nothing to identify with yet: add a gesture and record a few samples of it.',
  StrokeTooShort: 'That stroke was too short: draw a longer one.',
  NoStrokeStarted: 'No stroke was being drawn.',
  TrainingInProgress: 'Training is running: wait for it to finish.',
  InvalidFile: 'That file is not a gesture set.',
  InvalidPath: 'That file could not be read.',
  LoadingInProgress: 'A set is still being loaded.',
  SavingInProgress: 'The set is still being saved.',
};
function fail(error) {
  state.errors++;
  if (error instanceof ZandoError) {
    show(`${explanations[error.codeName] ?? 'That did not work.'} (${error.codeName}, ${error.code})`, 'error');
  } else {
    show(String(error?.message ?? error), 'error');
  }
}
const guarded = (handler) => async (...args) => {
  try {
    await handler(...args);
  } catch (error) {
    fail(error);
  }
};

// ---- The 3D view ----

const renderer = new THREE.WebGLRenderer({ canvas: ui.canvas, antialias: true, preserveDrawingBuffer: true });
renderer.setPixelRatio(Math.min(2, window.devicePixelRatio));
renderer.xr.enabled = true;
const scene = new THREE.Scene();
scene.background = new THREE.Color('#10151e');
const camera = new THREE.PerspectiveCamera(60, 1, 0.01, 20);
camera.position.set(...kHead);
scene.add(camera);
const grid = new THREE.GridHelper(6, 24, '#334155', '#1e293b');
scene.add(grid);
// The drawing plane's frame, so that a stroke has a place to go.
const frame = new THREE.LineSegments(
  new THREE.EdgesGeometry(new THREE.PlaneGeometry(0.5, 0.36)),
  new THREE.LineBasicMaterial({ color: '#475569' }));
frame.position.set(-0.08, kHead[1], -kDrawingDistance);
scene.add(frame);

const strokeLine = new THREE.Line(new THREE.BufferGeometry(), new THREE.LineBasicMaterial({ color: '#f8fafc' }));
scene.add(strokeLine);
const strokePoints = [];

// The selected gesture's samples, turning slowly to the right of the drawing plane.
const samplesGroup = new THREE.Group();
samplesGroup.position.set(0.28, kHead[1], -0.75);
scene.add(samplesGroup);

function resize() {
  const { clientWidth: w, clientHeight: h } = ui.canvas;
  if (renderer.xr.isPresenting || w === 0 || h === 0) return;
  renderer.setSize(w, h, false);
  camera.aspect = w / h;
  camera.updateProjectionMatrix();
}
window.addEventListener('resize', resize);

function setStrokeLine() {
  strokeLine.geometry.dispose();
  strokeLine.geometry = new THREE.BufferGeometry().setFromPoints(strokePoints);
}

function showSamples() {
  for (const child of [...samplesGroup.children]) {
    child.geometry.dispose();
    samplesGroup.remove(child);
  }
  const g = state.selected;
  if (!state.gestures || g < 0 || g >= state.gestures.numberOfGestures) return;
  const count = Math.min(12, state.gestures.getGestureNumberOfSamples(g));
  const colour = kColours[g % kColours.length];
  for (let s = 0; s < count; s++) {
    const { handPositions } = state.gestures.getGestureSampleStroke(g, s);
    const n = handPositions.length / 3;
    if (n < 2) continue;
    const centre = new THREE.Vector3();
    const points = [];
    for (let i = 0; i < n; i++) points.push(new THREE.Vector3(handPositions[3 * i], handPositions[3 * i + 1], handPositions[3 * i + 2]));
    points.forEach((p) => centre.add(p));
    centre.divideScalar(n);
    let radius = 0;
    points.forEach((p) => { radius = Math.max(radius, p.distanceTo(centre)); });
    const scale = 0.12 / Math.max(radius, 1e-6);
    const shown = points.map((p) => p.clone().sub(centre).multiplyScalar(scale));
    const line = new THREE.Line(new THREE.BufferGeometry().setFromPoints(shown),
      new THREE.LineBasicMaterial({ color: colour, transparent: true, opacity: 0.45 + 0.55 / (1 + s) }));
    line.position.z = -0.01 * s;
    samplesGroup.add(line);
  }
}

// ---- Gestures, results and training ----

function refresh() {
  const gr = state.gestures;
  ui.list.replaceChildren();
  const n = gr.numberOfGestures;
  if (state.selected >= n) state.selected = n - 1;
  for (let g = 0; g < n; g++) {
    const item = document.createElement('li');
    item.className = g === state.selected ? 'selected' : '';
    item.dataset.index = String(g);
    const swatch = document.createElement('span');
    swatch.className = 'swatch';
    swatch.style.background = kColours[g % kColours.length];
    const name = document.createElement('span');
    name.className = 'name';
    name.textContent = gr.getGestureName(g);
    const count = document.createElement('span');
    count.className = 'count';
    const samples = gr.getGestureNumberOfSamples(g);
    count.textContent = `${samples} sample${samples === 1 ? '' : 's'}`;
    const select = document.createElement('button');
    select.textContent = g === state.selected ? 'Selected' : 'Select';
    select.className = 'select';
    select.addEventListener('click', () => { state.selected = g; refresh(); });
    const remove = document.createElement('button');
    remove.textContent = '✕';
    remove.title = 'Delete this gesture';
    remove.className = 'delete';
    remove.addEventListener('click', guarded(() => {
      gr.deleteGesture(g);
      if (state.selected === g) state.selected = -1;
      refresh();
    }));
    item.append(swatch, name, count, select, remove);
    ui.list.append(item);
  }
  ui.train.disabled = state.training;
  ui.enhanced.checked = gr.enhancedRecognition;
  showSamples();
  updateHint();
}

function mode() { return document.querySelector('input[name=mode]:checked').value; }

function updateHint() {
  if (state.training) ui.hint.textContent = 'Training… you can keep drawing.';
  else if (mode() === 'record' && state.selected < 0) ui.hint.textContent = 'Add or select a gesture, then draw samples of it here.';
  else if (mode() === 'record') ui.hint.textContent = `Draw a sample of “${state.gestures.getGestureName(state.selected)}” here.`;
  else ui.hint.textContent = 'Draw a gesture here to identify it.';
}

function showResult(gesture, result) {
  const gr = state.gestures;
  state.lastGesture = gesture;
  state.lastResult = result;
  // The similarity needs the statistics of a training; before that it is negative.
  const similarity = result.similarity >= 0 ? ` (similarity ${result.similarity.toFixed(2)})` : '';
  ui.result.textContent = gesture >= 0 ? `It was “${gr.getGestureName(gesture)}”${similarity}` : 'No gesture recognised.';
  ui.probabilities.replaceChildren();
  result.probabilities.forEach((p, g) => {
    const item = document.createElement('li');
    if (g === gesture) item.className = 'winner';
    const name = document.createElement('span');
    name.textContent = gr.getGestureName(g);
    const bar = document.createElement('div');
    bar.className = 'bar';
    bar.style.width = `${Math.round(100 * Math.max(0, Math.min(1, p)))}%`;
    const value = document.createElement('span');
    value.textContent = `${Math.round(100 * p)} %`;
    item.append(name, bar, value);
    ui.probabilities.append(item);
  });
}

// ---- Strokes ----

function beginStroke(point) {
  const gr = state.gestures;
  const recordAs = mode() === 'record' ? state.selected : -1;
  if (mode() === 'record' && recordAs < 0) throw new Error('Select a gesture (or add one) before recording a sample.');
  gr.startStroke(kHead, kFacing, recordAs);
  state.drawing = true;
  strokePoints.length = 0;
  addPoint(point);
}

function addPoint(point, rotation) {
  state.gestures.contdStroke([point.x, point.y, point.z], rotation);
  strokePoints.push(point.clone());
  setStrokeLine();
}

function finishStroke(head = kHead, facing = kFacing) {
  if (!state.drawing) return;
  state.drawing = false;
  const gr = state.gestures;
  gr.updateHeadPosition(head, facing);
  const result = {};
  const gesture = gr.endStroke(result);
  state.strokesEnded++;
  if (mode() === 'record') {
    show(`Sample ${gr.getGestureNumberOfSamples(gesture)} of “${gr.getGestureName(gesture)}” recorded.`);
    refresh();
  } else {
    show('');
    showResult(gesture, result);
  }
}

// A pointer on the canvas, lifted onto the drawing plane in front of the head.
const ray = new THREE.Raycaster();
const plane = new THREE.Plane(new THREE.Vector3(0, 0, 1), kDrawingDistance);
function pointerToWorld(event) {
  const rect = ui.canvas.getBoundingClientRect();
  const ndc = new THREE.Vector2(((event.clientX - rect.left) / rect.width) * 2 - 1, -((event.clientY - rect.top) / rect.height) * 2 + 1);
  ray.setFromCamera(ndc, camera);
  return ray.ray.intersectPlane(plane, new THREE.Vector3());
}

ui.canvas.addEventListener('pointerdown', guarded((event) => {
  if (event.button !== 0 || !state.gestures) return;
  ui.canvas.setPointerCapture(event.pointerId);
  beginStroke(pointerToWorld(event));
}));
ui.canvas.addEventListener('pointermove', guarded((event) => {
  if (!state.drawing) return;
  const events = event.getCoalescedEvents ? event.getCoalescedEvents() : [event];
  for (const e of events.length ? events : [event]) addPoint(pointerToWorld(e));
}));
const endPointer = guarded(() => finishStroke());
ui.canvas.addEventListener('pointerup', endPointer);
ui.canvas.addEventListener('pointercancel', guarded(() => {
  if (state.drawing) state.gestures.cancelStroke();
  state.drawing = false;
}));

// ---- WebXR: the controller's trigger draws, the headset is the head ----

async function setUpXr() {
  if (!navigator.xr || !(await navigator.xr.isSessionSupported('immersive-vr').catch(() => false))) return;
  ui.enterVr.hidden = false;
  ui.enterVr.addEventListener('click', guarded(async () => {
    const session = await navigator.xr.requestSession('immersive-vr', { optionalFeatures: ['local-floor'] });
    renderer.xr.setReferenceSpaceType('local-floor');
    await renderer.xr.setSession(session);
  }));
  for (let i = 0; i < 2; i++) {
    const controller = renderer.xr.getController(i);
    scene.add(controller);
    const pose = () => {
      const p = new THREE.Vector3(), q = new THREE.Quaternion();
      controller.matrixWorld.decompose(p, q, new THREE.Vector3());
      return { p, q: [q.x, q.y, q.z, q.w] };
    };
    const head = () => {
      const xrCamera = renderer.xr.getCamera();
      const p = new THREE.Vector3(), q = new THREE.Quaternion();
      xrCamera.matrixWorld.decompose(p, q, new THREE.Vector3());
      return { p: [p.x, p.y, p.z], q: [q.x, q.y, q.z, q.w] };
    };
    controller.addEventListener('selectstart', guarded(() => {
      const h = head();
      const recordAs = mode() === 'record' ? state.selected : -1;
      state.gestures.startStroke(h.p, h.q, recordAs);
      state.drawing = true;
      state.xrController = { pose, head };
      strokePoints.length = 0;
    }));
    controller.addEventListener('selectend', guarded(() => {
      const h = head();
      state.xrController = null;
      finishStroke(h.p, h.q);
    }));
  }
}

// ---- The frame loop ----

let lastFrame = 0;
const xrHead = { p: [0, 0, 0], q: [0, 0, 0, 1] };
renderer.setAnimationLoop((time) => {
  state.frames++;
  const dt = lastFrame ? (time - lastFrame) / 1000 : 0;
  lastFrame = time;
  samplesGroup.rotation.y += dt * 0.6;
  const xr = state.xrController;
  if (state.drawing && xr) {
    try {
      const { p, q } = xr.pose();
      const h = xr.head();
      xrHead.p = h.p;
      xrHead.q = h.q;
      state.gestures.updateHeadPosition(h.p, h.q);
      addPoint(p, q);
    } catch (error) {
      fail(error);
    }
  }
  renderer.render(scene, camera);
});

// ---- Controls ----

$('add-form').addEventListener('submit', guarded((event) => {
  event.preventDefault();
  const name = ui.name.value.trim() || `gesture ${state.gestures.numberOfGestures + 1}`;
  state.selected = state.gestures.createGesture(name);
  ui.name.value = '';
  document.getElementById('mode-record').checked = true;
  show(`“${name}” added: now draw a few samples of it (three or more).`);
  refresh();
}));
for (const radio of document.querySelectorAll('input[name=mode]')) radio.addEventListener('change', updateHint);

ui.enhanced.addEventListener('change', guarded(() => {
  state.gestures.enhancedRecognition = ui.enhanced.checked;
  show(ui.enhanced.checked ? 'Enhanced mode: strokes are compared with every sample, no training needed.'
    : 'Network mode: train the network after recording samples.');
}));

ui.train.addEventListener('click', guarded(async () => {
  const gr = state.gestures;
  if (gr.numberOfGestures === 0) throw new ZandoError(-9, 'train');
  gr.maxTrainingTime = Math.max(1, Math.min(60, Number(ui.seconds.value) || 5));
  state.training = true;
  state.progressEvents = 0;
  ui.progress.value = 0;
  ui.trainStatus.textContent = 'Training…';
  refresh();
  try {
    const score = await gr.train();
    ui.progress.value = 1;
    ui.trainStatus.textContent = `Trained: ${Math.round(100 * score)} % of the samples recognised`;
    show('Training finished.');
  } finally {
    state.training = false;
    refresh();
  }
}));

ui.save.addEventListener('click', guarded(async () => {
  const bytes = await state.gestures.saveToBytesAsync();
  const link = document.createElement('a');
  link.href = URL.createObjectURL(new Blob([bytes], { type: 'application/octet-stream' }));
  link.download = 'gestures.dat';
  link.click();
  setTimeout(() => URL.revokeObjectURL(link.href), 1000);
  show(`Set saved (${bytes.length} bytes).`);
}));

ui.load.addEventListener('change', guarded(async () => {
  const file = ui.load.files[0];
  if (!file) return;
  ui.load.value = '';
  const bytes = new Uint8Array(await file.arrayBuffer());
  await state.gestures.loadFromBytesAsync(bytes);
  state.selected = state.gestures.numberOfGestures > 0 ? 0 : -1;
  document.getElementById('mode-identify').checked = true;
  show(`Loaded “${file.name}”: ${state.gestures.numberOfGestures} gestures.`);
  refresh();
}));

ui.clear.addEventListener('click', guarded(() => {
  state.gestures.deleteAllGestures();
  state.selected = -1;
  ui.result.textContent = 'Draw a gesture to identify it.';
  ui.probabilities.replaceChildren();
  show('All gestures deleted.');
  refresh();
}));

// ---- Start ----

window.addEventListener('unhandledrejection', (event) => {
  event.preventDefault();
  fail(event.reason);
});

resize();
try {
  if (!window.crossOriginIsolated) throw new Error('This page needs a server that sends the cross-origin isolation headers (COOP and COEP).');
  await init();
  const gr = new GestureRecognition();
  gr.enhancedRecognition = true;
  gr.addEventListener('trainingprogress', (event) => {
    state.progressEvents++;
    ui.progress.value = Math.max(0, Math.min(1, event.detail.score));
    ui.trainStatus.textContent = `Training… ${Math.round(100 * event.detail.score)} % so far`;
  });
  state.gestures = gr;
  refresh();
  await setUpXr();
  document.body.dataset.ready = 'true';
} catch (error) {
  fail(error);
  ui.hint.textContent = 'The gesture library could not start.';
}
