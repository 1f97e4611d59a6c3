// Zando for the web: recognition of 3D hand-motion gestures, the library compiled to WebAssembly.
//
// Call `init()` once (it loads zando-core.wasm and starts the worker threads), then make
// GestureRecognition objects (one recogniser: a hand, a controller or the head) and
// GestureCombinations objects (several recognisers driven as one). Both release their native
// object in dispose().
//
// Conventions, as in the C# binding:
// - Positions are [x, y, z] and rotations quaternions [x, y, z, w], as Float64Array or plain
//   arrays; matrices are 16 numbers, column-major, with the translation in elements 12 to 14.
// - Methods throw ZandoError (with `code` and `codeName`) when the library answers with a negative
//   return code. The per-frame methods (stroke points, head poses, continuous identification,
//   detection) and those whose failures are ordinary outcomes also have a `try` form that returns
//   the library's number as it is. Per-frame calls allocate nothing: poses are copied into memory
//   reserved once per object, and results are written into objects and arrays the caller reuses.
// - Training, saving and loading run on worker threads. Their progress arrives as events on the
//   object (an EventTarget) on the page's own thread, and train(), saveToBytesAsync() and the other
//   promise forms resolve when the job is over.
// - Sets are files: Uint8Array bytes (a fetched file, a file the user picked) or paths in the
//   module's virtual file system (`files`).
import createZandoCore from './zando-core.js';

/** The library's return codes. Numbers that are skipped are not used. */
export const ReturnCode = Object.freeze({
  Success: 0,
  Failed: -1,
  InvalidIndex: -2,
  InvalidPath: -3,
  InvalidFile: -4,
  PointCountMismatch: -6,
  StrokeTooShort: -7,
  TrainingInProgress: -8,
  NoGestures: -9,
  ModelMismatch: -10,
  CannotReplaceFile: -11,
  NoStrokeStarted: -12,
  NoPartResult: -13,
  ResourceError: -14,
  LoadingInProgress: -15,
  SavingInProgress: -17,
  InvalidParameter: -18,
  StreamError: -19,
});

const codeNames = new Map(Object.entries(ReturnCode).map(([name, code]) => [code, name]));

/** The name of a return code, "Unknown" for a number outside ReturnCode. */
export function codeName(code) {
  return codeNames.get(code) ?? 'Unknown';
}

/** A negative return code, thrown. */
export class ZandoError extends Error {
  constructor(code, operation) {
    super(`${operation} failed: ${codeName(code)} (${code})`);
    this.name = 'ZandoError';
    this.code = code;
    this.codeName = codeName(code);
    this.operation = operation;
  }
}

/** The axis a copied gesture is mirrored about. */
export const MirrorAxis = Object.freeze({ None: 0, X: 1, Y: 2, Z: 4 });

let core = null;
let starting = null;
// Native handle -> wrapper, for the events the worker threads queue on the page's thread.
const objects = new Map();

/**
 * Loads the module once; later calls return the same promise. `options.locateFile(name)` may
 * say where zando-core.wasm and zando-core.worker.js are (by default beside this file).
 */
export function init(options = {}) {
  if (starting) return starting;
  const settings = {};
  if (options.locateFile) settings.locateFile = options.locateFile;
  starting = createZandoCore(settings).then((instance) => {
    core = instance;
    core.zandoEvent = (handle, kind, value) => objects.get(handle)?._event(kind, value);
    return core;
  });
  return starting;
}

function ready() {
  if (!core) throw new Error('Zando is not loaded: await init() first');
  return core;
}

/** The library's version text. */
export function version() {
  const c = ready();
  return c.UTF8ToString(c._GestureRecognition_getVersionString());
}

/** The module's virtual file system (in memory), where sets are saved and loaded by path. */
export const files = Object.freeze({
  write(path, bytes) { ready().FS.writeFile(path, bytes); },
  read(path) { return ready().FS.readFile(path); },
  remove(path) { ready().FS.unlink(path); },
  exists(path) { return ready().FS.analyzePath(path).exists; },
});

let temporaryCount = 0;
function temporaryPath() { return `/tmp/zando-${++temporaryCount}.dat`; }

function check(result, operation) {
  if (result < 0) throw new ZandoError(result, operation);
  return result;
}

// Events of the worker threads, as the bridge numbers them.
const kEvents = ['trainingprogress', 'trainingfinish', 'savingprogress', 'savingfinish', 'loadingprogress', 'loadingfinish'];

// Memory of one object for the per-frame calls: poses in, results out. Offsets in doubles.
const kHeadP = 0, kHeadQ = 3, kHandP = 7, kHandQ = 10, kMatrix = 14, kOut = 30, kPos = 31, kScale = 34,
  kDir0 = 35, kDir1 = 38, kDir2 = 41, kInt = 44, kScratchDoubles = 48;

function copy(view, at, values, count) {
  for (let i = 0; i < count; i++) view[at + i] = values[i];
}

/** Shared by both classes: the native object, its scratch memory, events and background jobs. */
class NativeObject extends EventTarget {
  constructor(handle, prefix, arrays) {
    super();
    const c = ready();
    if (!handle) throw new ZandoError(ReturnCode.ResourceError, 'create');
    this._c = c;
    this._h = handle;
    this._prefix = prefix;
    this._scratch = c._malloc(kScratchDoubles * 8);
    this._d = new Float64Array(c.HEAPF64.buffer, this._scratch, kScratchDoubles);
    this._i = new Int32Array(c.HEAP32.buffer, this._scratch + kInt * 8, 4);
    this._arrays = 0;
    this._arraySize = 0;
    this._ensureArrays(arrays);
    this._waiting = { training: null, saving: null, loading: null };
    objects.set(handle, this);
  }

  /** Releases the native object after cancelling its background jobs; later calls throw. */
  dispose() {
    if (!this._h) return;
    this._c[`_${this._prefix}_delete`](this._h);
    objects.delete(this._h);
    this._c._free(this._scratch);
    if (this._arrays) this._c._free(this._arrays);
    for (const job of Object.values(this._waiting)) job?.reject(new ZandoError(ReturnCode.Failed, 'dispose'));
    this._h = 0;
  }

  get disposed() { return this._h === 0; }

  _handle() {
    if (!this._h) throw new Error('the object was disposed');
    return this._h;
  }

  // Two arrays of `count` doubles (probabilities, similarities) in native memory, kept for reuse.
  _ensureArrays(count) {
    if (count <= this._arraySize) return;
    const c = this._c;
    if (this._arrays) c._free(this._arrays);
    this._arraySize = Math.max(count, 2 * this._arraySize, 16);
    this._arrays = c._malloc(this._arraySize * 16);
    this._p = new Float64Array(c.HEAPF64.buffer, this._arrays, this._arraySize);
    this._s = new Float64Array(c.HEAPF64.buffer, this._arrays + this._arraySize * 8, this._arraySize);
  }

  _ptr(offset) { return this._scratch + offset * 8; }

  _headQ(headPosition, headRotation) {
    copy(this._d, kHeadP, headPosition, 3);
    copy(this._d, kHeadQ, headRotation, 4);
  }

  _strokeInfo(out) {
    const d = this._d;
    if (!out) return;
    if (out.position) copy(out.position, 0, [d[kPos], d[kPos + 1], d[kPos + 2]], 3);
    else out.position = [d[kPos], d[kPos + 1], d[kPos + 2]];
    out.scale = d[kScale];
    out.directions = [[d[kDir0], d[kDir0 + 1], d[kDir0 + 2]], [d[kDir1], d[kDir1 + 1], d[kDir1 + 2]],
      [d[kDir2], d[kDir2 + 1], d[kDir2 + 2]]];
  }

  _string(text) {
    const c = this._c;
    const size = c.lengthBytesUTF8(text) + 1;
    const pointer = c._malloc(size);
    c.stringToUTF8(text, pointer, size);
    return pointer;
  }

  _withString(text, call) {
    const pointer = this._string(text);
    try { return call(pointer); } finally { this._c._free(pointer); }
  }

  _withBytes(bytes, call) {
    const c = this._c;
    const pointer = c._malloc(Math.max(1, bytes.length));
    c.HEAPU8.set(bytes, pointer);
    try { return call(pointer); } finally { c._free(pointer); }
  }

  _fn(name) { return this._c[`_${this._prefix}_${name}`]; }

  _event(kind, value) {
    const type = kEvents[kind];
    if (!type) return;
    const detail = type.startsWith('training') ? { score: value } : type.endsWith('progress') ? { percent: value } : { result: value };
    this.dispatchEvent(new CustomEvent(type, { detail }));
    const job = type === 'trainingfinish' ? 'training' : type === 'savingfinish' ? 'saving' : type === 'loadingfinish' ? 'loading' : null;
    if (job && this._waiting[job]) this._settle(job, value);
  }

  // A finish event is queued by the worker just before it lets go of the object: the promise
  // resolves once the object says the job is over.
  _settle(job, value) {
    const waiting = this._waiting[job];
    const busy = job === 'training' ? 'isTraining' : job === 'saving' ? 'isSaving' : 'isLoading';
    if (this._h && this._fn(busy)(this._h)) {
      setTimeout(() => this._settle(job, value), 2);
      return;
    }
    this._waiting[job] = null;
    waiting.finish(value);
  }

  _startJob(job, start, operation, finish) {
    if (this._waiting[job]) return Promise.reject(new ZandoError(job === 'training' ? ReturnCode.TrainingInProgress : job === 'saving' ? ReturnCode.SavingInProgress : ReturnCode.LoadingInProgress, operation));
    return new Promise((resolve, reject) => {
      this._waiting[job] = { finish: (value) => { try { resolve(finish(value)); } catch (e) { reject(e); } }, reject };
      let result;
      try { result = start(); } catch (e) { this._waiting[job] = null; reject(e); return; }
      if (result < 0) {
        this._waiting[job] = null;
        reject(new ZandoError(result, operation));
      }
    });
  }

  /** Starts training on a worker thread; progress arrives as 'trainingprogress' events. */
  startTraining() { check(this._fn('startTraining')(this._handle()), 'startTraining'); }

  /** Trains on a worker thread; resolves with the final score once training has ended. */
  train() {
    return this._startJob('training', () => this._fn('startTraining')(this._handle()), 'train', () => this.recognitionScore);
  }

  /** Stops training; the network trained so far is kept. */
  stopTraining() { check(this._fn('stopTraining')(this._handle()), 'stopTraining'); }

  get isTraining() { return this._fn('isTraining')(this._handle()) !== 0; }
  get isSaving() { return this._fn('isSaving')(this._handle()) !== 0; }
  get isLoading() { return this._fn('isLoading')(this._handle()) !== 0; }

  /** The longest training, in seconds. */
  get maxTrainingTime() { return this._fn('getMaxTrainingTime')(this._handle()); }
  set maxTrainingTime(seconds) { this._fn('setMaxTrainingTime')(this._handle(), seconds); }

  /** Identification by the shape of every stored sample, usable without training. */
  get enhancedRecognition() { return this._fn('getEnhancedRecognition')(this._handle()) !== 0; }
  set enhancedRecognition(on) { check(this._fn('setEnhancedRecognition')(this._handle(), on ? 1 : 0), 'enhancedRecognition'); }

  /** How willing contdDetect is to report: 0 strictest, 1 most willing. */
  get detectionSensitivity() { return this._fn('getDetectionSensitivity')(this._handle()); }
  set detectionSensitivity(value) { check(this._fn('setDetectionSensitivity')(this._handle(), value), 'detectionSensitivity'); }

  /** Makes the object read the host's frame time (seconds) instead of the clock; negative goes back. */
  setHostTime(seconds) { check(this._fn('setHostTime')(this._handle(), seconds), 'setHostTime'); }

  /** Saves the set to a path of the virtual file system. */
  saveToFile(path) { this._withString(path, (p) => check(this._fn('saveToFile')(this._handle(), p), 'saveToFile')); }

  /** The saved set as bytes. */
  saveToBytes() {
    const path = temporaryPath();
    try {
      this.saveToFile(path);
      return files.read(path);
    } finally {
      if (files.exists(path)) files.remove(path);
    }
  }

  /** Saves to the virtual file system on a worker thread; 'savingprogress' events report. */
  saveToFileAsync(path) {
    const pointer = this._string(path);
    return this._startJob('saving', () => {
      const result = this._fn('saveToFileAsync')(this._handle(), pointer);
      if (result < 0) this._c._free(pointer);
      return result;
    }, 'saveToFileAsync', (result) => {
      this._c._free(pointer);
      check(result, 'saveToFileAsync');
    });
  }

  /** The saved set as bytes, written on a worker thread. */
  async saveToBytesAsync() {
    const path = temporaryPath();
    try {
      await this.saveToFileAsync(path);
      return files.read(path);
    } finally {
      if (files.exists(path)) files.remove(path);
    }
  }

  /** Replaces the set with one from the virtual file system. */
  loadFromFile(path) { this._withString(path, (p) => check(this._fn('loadFromFile')(this._handle(), p, 0), 'loadFromFile')); }

  /** Replaces the set with one from bytes (a fetched or picked file). */
  loadFromBytes(bytes) {
    this._withBytes(bytes, (p) => check(this._fn('loadFromBuffer')(this._handle(), p, bytes.length, 0), 'loadFromBytes'));
    this._afterLoad();
  }

  /** Adds the gestures of a set in bytes to this one (same names: samples are merged). */
  importFromBytes(bytes) {
    this._withBytes(bytes, (p) => check(this._fn('importFromBuffer')(this._handle(), p, bytes.length, 0), 'importFromBytes'));
    this._afterLoad();
  }

  /** Loads from the virtual file system on a worker thread; 'loadingprogress' events report. */
  loadFromFileAsync(path) {
    const pointer = this._string(path);
    return this._startJob('loading', () => {
      const result = this._fn('loadFromFileAsync')(this._handle(), pointer, 0);
      if (result < 0) this._c._free(pointer);
      return result;
    }, 'loadFromFileAsync', (result) => {
      this._c._free(pointer);
      check(result, 'loadFromFileAsync');
      this._afterLoad();
    });
  }

  /** Loads from bytes on a worker thread. */
  loadFromBytesAsync(bytes) {
    const c = this._c;
    const pointer = c._malloc(Math.max(1, bytes.length));
    c.HEAPU8.set(bytes, pointer);
    return this._startJob('loading', () => {
      const result = this._fn('loadFromBufferAsync')(this._handle(), pointer, bytes.length, 0);
      if (result < 0) c._free(pointer);
      return result;
    }, 'loadFromBytesAsync', (result) => {
      c._free(pointer);
      check(result, 'loadFromBytesAsync');
      this._afterLoad();
    });
  }

  _afterLoad() {}
}

/** One recogniser: a hand, a controller or the head. */
export class GestureRecognition extends NativeObject {
  constructor() {
    const c = ready();
    super(c._GestureRecognition_create(), 'GestureRecognition', 16);
    c._ZandoWeb_attachRecognitionEvents(this._h);
  }

  // ---- Stroke capture ----

  /** Starts a stroke: `gesture` records it as a sample of that gesture, -1 identifies it. */
  startStroke(headPosition, headRotation, gesture = -1) {
    check(this.tryStartStroke(headPosition, headRotation, gesture), 'startStroke');
  }
  tryStartStroke(headPosition, headRotation, gesture = -1) {
    this._headQ(headPosition, headRotation);
    return this._c._GestureRecognition_startStroke(this._handle(), this._ptr(kHeadP), this._ptr(kHeadQ), gesture);
  }
  /** Starts a stroke with the head as a 16-number matrix. */
  startStrokeM(headMatrix, gesture = -1) {
    copy(this._d, kMatrix, headMatrix, 16);
    check(this._c._GestureRecognition_startStrokeM(this._handle(), this._ptr(kMatrix), gesture), 'startStrokeM');
  }

  updateHeadPosition(headPosition, headRotation) { check(this.tryUpdateHeadPosition(headPosition, headRotation), 'updateHeadPosition'); }
  tryUpdateHeadPosition(headPosition, headRotation) {
    this._headQ(headPosition, headRotation);
    return this._c._GestureRecognition_updateHeadPositionQ(this._handle(), this._ptr(kHeadP), this._ptr(kHeadQ));
  }

  /** Adds a point to the stroke: the hand's position and, if given, its rotation. */
  contdStroke(handPosition, handRotation) { check(this.tryContdStroke(handPosition, handRotation), 'contdStroke'); }
  tryContdStroke(handPosition, handRotation) {
    const d = this._d;
    copy(d, kHandP, handPosition, 3);
    if (!handRotation) return this._c._GestureRecognition_contdStroke(this._handle(), this._ptr(kHandP));
    copy(d, kHandQ, handRotation, 4);
    return this._c._GestureRecognition_contdStrokeQ(this._handle(), this._ptr(kHandP), this._ptr(kHandQ));
  }
  /** Adds a point given as the hand's 16-number matrix. */
  contdStrokeM(handMatrix) {
    copy(this._d, kMatrix, handMatrix, 16);
    return check(this._c._GestureRecognition_contdStrokeM(this._handle(), this._ptr(kMatrix)), 'contdStrokeM');
  }

  get isStrokeStarted() { return this._c._GestureRecognition_isStrokeStarted(this._handle()) !== 0; }
  cancelStroke() { check(this._c._GestureRecognition_cancelStroke(this._handle()), 'cancelStroke'); }
  pruneStroke(maxPoints, maxAgeMs) { return check(this._c._GestureRecognition_pruneStroke(this._handle(), maxPoints, maxAgeMs), 'pruneStroke'); }

  /**
   * Ends the stroke. A sample: returns the gesture it was recorded for. Identification: returns
   * the gesture identified, with `out.similarity`, `out.probabilities` and `out.similarities`
   * (arrays, one number a gesture) and where the stroke was (`position`, `scale`, `directions`).
   */
  endStroke(out = {}) { return check(this.tryEndStroke(out), 'endStroke'); }

  /** endStroke's return code as it is: StrokeTooShort (-7) for a stroke of too few points, for example. */
  tryEndStroke(out = {}) {
    const count = Math.max(1, this.numberOfGestures);
    this._ensureArrays(count);
    this._i[0] = count;
    const gesture = this._c._GestureRecognition_endStrokeAndGetAllProbabilitiesAndSimilarities(
      this._handle(), this._arrays, this._arrays + this._arraySize * 8, this._ptr(kInt), this._ptr(kPos),
      this._ptr(kScale), this._ptr(kDir0), this._ptr(kDir1), this._ptr(kDir2));
    if (gesture < 0) return gesture;
    const n = Math.max(0, Math.min(this._i[0], count));
    out.probabilities = Array.from(this._p.subarray(0, n));
    out.similarities = Array.from(this._s.subarray(0, n));
    out.similarity = gesture < n ? this._s[gesture] : 0;
    this._strokeInfo(out);
    return gesture;
  }

  // ---- Continuous identification and detection (every frame, allocation-free) ----

  /**
   * Identifies the stroke so far (the last moments of motion). Returns the gesture, or a negative
   * code; `out.similarity` receives the similarity when `out` is given.
   */
  contdIdentify(headPosition, headRotation, out) { return check(this.tryContdIdentify(headPosition, headRotation, out), 'contdIdentify'); }
  tryContdIdentify(headPosition, headRotation, out) {
    this._headQ(headPosition, headRotation);
    const gesture = this._c._GestureRecognition_contdIdentify(this._handle(), this._ptr(kHeadP), this._ptr(kHeadQ), this._ptr(kOut));
    if (out) out.similarity = this._d[kOut];
    return gesture;
  }
  /**
   * As contdIdentify, writing every gesture's probability and similarity into the caller's arrays
   * (Float64Array or plain, at least numberOfGestures long).
   */
  tryContdIdentifyAndGetAllProbabilitiesAndSimilarities(headPosition, headRotation, probabilities, similarities) {
    this._headQ(headPosition, headRotation);
    const count = probabilities.length;
    this._ensureArrays(count);
    this._i[0] = count;
    const gesture = this._c._GestureRecognition_contdIdentifyAndGetAllProbabilitiesAndSimilarities(
      this._handle(), this._ptr(kHeadP), this._ptr(kHeadQ), this._arrays, this._arrays + this._arraySize * 8, this._ptr(kInt));
    if (gesture >= 0) {
      const n = Math.min(this._i[0], count);
      for (let g = 0; g < n; g++) {
        probabilities[g] = this._p[g];
        if (similarities) similarities[g] = this._s[g];
      }
    }
    return gesture;
  }

  /**
   * Gestures in running motion: true on the one frame a performance was completed, with
   * `out.gesture` and `out.confidence` (0 to 1) set; false on all other frames.
   */
  contdDetect(headPosition, headRotation, out) { return check(this.tryContdDetect(headPosition, headRotation, out), 'contdDetect') === 1; }
  tryContdDetect(headPosition, headRotation, out) {
    this._headQ(headPosition, headRotation);
    const result = this._c._GestureRecognition_contdDetect(this._handle(), this._ptr(kHeadP), this._ptr(kHeadQ), this._ptr(kInt), this._ptr(kOut));
    if (result === 1 && out) {
      out.gesture = this._i[0];
      out.confidence = this._d[kOut];
    }
    return result;
  }

  // ---- Gestures and samples ----

  get numberOfGestures() { return this._c._GestureRecognition_numberOfGestures(this._handle()); }
  /** A new gesture; returns its index. */
  createGesture(name) { return this._withString(name, (p) => check(this._c._GestureRecognition_createGesture(this._handle(), p, 0), 'createGesture')); }
  deleteGesture(index) { check(this._c._GestureRecognition_deleteGesture(this._handle(), index), 'deleteGesture'); }
  deleteAllGestures() { check(this._c._GestureRecognition_deleteAllGestures(this._handle()), 'deleteAllGestures'); }
  getGestureName(index) {
    const pointer = this._c._GestureRecognition_getGestureName(this._handle(), index);
    if (!pointer) throw new ZandoError(ReturnCode.InvalidIndex, 'getGestureName');
    return this._c.UTF8ToString(pointer);
  }
  setGestureName(index, name) { this._withString(name, (p) => check(this._c._GestureRecognition_setGestureName(this._handle(), index, p), 'setGestureName')); }
  getGestureEnabled(index) { return this._c._GestureRecognition_getGestureEnabled(this._handle(), index) > 0; }
  setGestureEnabled(index, enabled) { check(this._c._GestureRecognition_setGestureEnabled(this._handle(), index, enabled ? 1 : 0), 'setGestureEnabled'); }
  getGestureNumberOfSamples(index) { return check(this._c._GestureRecognition_getGestureNumberOfSamples(this._handle(), index), 'getGestureNumberOfSamples'); }
  deleteGestureSample(gesture, sample) { check(this._c._GestureRecognition_deleteGestureSample(this._handle(), gesture, sample), 'deleteGestureSample'); }
  deleteAllGestureSamples(gesture) { check(this._c._GestureRecognition_deleteAllGestureSamples(this._handle(), gesture), 'deleteAllGestureSamples'); }

  /**
   * A recorded sample as four arrays of points: `handPositions` and `headPositions` (3 numbers a
   * point), `handRotations` and `headRotations` (4 a point), all Float64Array.
   */
  getGestureSampleStroke(gesture, sample, processed = false) {
    const c = this._c;
    const h = this._handle();
    const n = check(c._GestureRecognition_getGestureSampleLength(h, gesture, sample, processed ? 1 : 0), 'getGestureSampleStroke');
    const pointer = c._malloc(Math.max(1, n) * 14 * 8);
    try {
      const got = check(c._GestureRecognition_getGestureSampleStroke(h, gesture, sample, processed ? 1 : 0, n,
        pointer, pointer + n * 24, pointer + n * 56, pointer + n * 80), 'getGestureSampleStroke');
      const all = new Float64Array(c.HEAPF64.buffer, pointer, n * 14);
      return {
        handPositions: all.slice(0, got * 3),
        handRotations: all.slice(n * 3, n * 3 + got * 4),
        headPositions: all.slice(n * 7, n * 7 + got * 3),
        headRotations: all.slice(n * 10, n * 10 + got * 4),
      };
    } finally {
      c._free(pointer);
    }
  }

  /** The last training's score, 0 to 1. */
  get recognitionScore() { return this._c._GestureRecognition_recognitionScore(this._handle()); }
}

/** Several recognisers (parts, e.g. the two hands) driven as one, with combinations of their gestures. */
export class GestureCombinations extends NativeObject {
  constructor(numberOfParts) {
    const c = ready();
    super(c._GestureCombinations_create(numberOfParts), 'GestureCombinations', 16);
    c._ZandoWeb_attachCombinationEvents(this._h);
  }

  get numberOfParts() { return this._c._GestureCombinations_numberOfParts(this._handle()); }

  startStroke(part, headPosition, headRotation, gesture = -1) {
    check(this.tryStartStroke(part, headPosition, headRotation, gesture), 'startStroke');
  }
  tryStartStroke(part, headPosition, headRotation, gesture = -1) {
    this._headQ(headPosition, headRotation);
    return this._c._GestureCombinations_startStroke(this._handle(), part, this._ptr(kHeadP), this._ptr(kHeadQ), gesture);
  }
  updateHeadPosition(headPosition, headRotation) { check(this.tryUpdateHeadPosition(headPosition, headRotation), 'updateHeadPosition'); }
  tryUpdateHeadPosition(headPosition, headRotation) {
    this._headQ(headPosition, headRotation);
    return this._c._GestureCombinations_updateHeadPositionQ(this._handle(), this._ptr(kHeadP), this._ptr(kHeadQ));
  }
  contdStroke(part, handPosition, handRotation) { check(this.tryContdStroke(part, handPosition, handRotation), 'contdStroke'); }
  tryContdStroke(part, handPosition, handRotation) {
    const d = this._d;
    copy(d, kHandP, handPosition, 3);
    if (!handRotation) return this._c._GestureCombinations_contdStroke(this._handle(), part, this._ptr(kHandP));
    copy(d, kHandQ, handRotation, 4);
    return this._c._GestureCombinations_contdStrokeQ(this._handle(), part, this._ptr(kHandP), this._ptr(kHandQ));
  }
  /** Ends one part's stroke; returns that part's gesture (or the sample's gesture). */
  endStroke(part, out) { return check(this.tryEndStroke(part, out), 'endStroke'); }
  tryEndStroke(part, out) {
    const result = this._c._GestureCombinations_endStroke(this._handle(), part, this._ptr(kPos), this._ptr(kScale),
      this._ptr(kDir0), this._ptr(kDir1), this._ptr(kDir2));
    if (result >= 0) this._strokeInfo(out);
    return result;
  }
  isStrokeStarted(part) { return this._c._GestureCombinations_isStrokeStarted(this._handle(), part) !== 0; }
  cancelStroke(part) { check(this._c._GestureCombinations_cancelStroke(this._handle(), part), 'cancelStroke'); }

  /**
   * The combination of the parts' finished strokes; `out.probability` and `out.similarity` are set
   * when `out` is given.
   */
  identifyGestureCombination(out) { return check(this.tryIdentifyGestureCombination(out), 'identifyGestureCombination'); }
  tryIdentifyGestureCombination(out) {
    const result = this._c._GestureCombinations_identifyGestureCombination(this._handle(), this._ptr(kOut), this._ptr(kOut + 1), 0, 0);
    if (out) {
      out.probability = this._d[kOut];
      out.similarity = this._d[kOut + 1];
    }
    return result;
  }
  /** The combination the parts' running strokes form so far, or a negative code. */
  tryContdIdentify(headPosition, headRotation, out) {
    this._headQ(headPosition, headRotation);
    const result = this._c._GestureCombinations_contdIdentify(this._handle(), this._ptr(kHeadP), this._ptr(kHeadQ), this._ptr(kOut), 0, 0);
    if (out) out.similarity = this._d[kOut];
    return result;
  }
  contdIdentify(headPosition, headRotation, out) { return check(this.tryContdIdentify(headPosition, headRotation, out), 'contdIdentify'); }
  /** True on the one frame a combination was completed, with `out.combination` and `out.confidence`. */
  contdDetect(headPosition, headRotation, out) { return check(this.tryContdDetect(headPosition, headRotation, out), 'contdDetect') === 1; }
  tryContdDetect(headPosition, headRotation, out) {
    this._headQ(headPosition, headRotation);
    const result = this._c._GestureCombinations_contdDetect(this._handle(), this._ptr(kHeadP), this._ptr(kHeadQ), this._ptr(kInt), this._ptr(kOut));
    if (result === 1 && out) {
      out.combination = this._i[0];
      out.confidence = this._d[kOut];
    }
    return result;
  }

  numberOfGestures(part) { return check(this._c._GestureCombinations_numberOfGestures(this._handle(), part), 'numberOfGestures'); }
  createGesture(part, name) { return this._withString(name, (p) => check(this._c._GestureCombinations_createGesture(this._handle(), part, p, 0), 'createGesture')); }
  deleteGesture(part, index) { check(this._c._GestureCombinations_deleteGesture(this._handle(), part, index), 'deleteGesture'); }
  /** Copies a gesture to another part (toGesture -1: as a new gesture), optionally mirrored. */
  copyGesture(fromPart, fromGesture, toPart, toGesture = -1, mirror = MirrorAxis.None) {
    return check(this._c._GestureCombinations_copyGesture(this._handle(), fromPart, fromGesture, toPart, toGesture, mirror), 'copyGesture');
  }
  getGestureName(part, index) {
    const pointer = this._c._GestureCombinations_getGestureName(this._handle(), part, index);
    if (!pointer) throw new ZandoError(ReturnCode.InvalidIndex, 'getGestureName');
    return this._c.UTF8ToString(pointer);
  }
  getGestureNumberOfSamples(part, index) {
    return check(this._c._GestureCombinations_getGestureNumberOfSamples(this._handle(), part, index), 'getGestureNumberOfSamples');
  }

  get numberOfGestureCombinations() { return this._c._GestureCombinations_numberOfGestureCombinations(this._handle()); }
  createGestureCombination(name) {
    return this._withString(name, (p) => check(this._c._GestureCombinations_createGestureCombination(this._handle(), p), 'createGestureCombination'));
  }
  deleteGestureCombination(combination) { check(this._c._GestureCombinations_deleteGestureCombination(this._handle(), combination), 'deleteGestureCombination'); }
  /** Sets the gesture a part performs in a combination (-1: the part stays still). */
  setCombinationPartGesture(combination, part, gesture) {
    check(this._c._GestureCombinations_setCombinationPartGesture(this._handle(), combination, part, gesture), 'setCombinationPartGesture');
  }
  getCombinationPartGesture(combination, part) { return this._c._GestureCombinations_getCombinationPartGesture(this._handle(), combination, part); }
  getGestureCombinationName(combination) {
    const pointer = this._c._GestureCombinations_getGestureCombinationName(this._handle(), combination);
    if (!pointer) throw new ZandoError(ReturnCode.InvalidIndex, 'getGestureCombinationName');
    return this._c.UTF8ToString(pointer);
  }

  /** How many parts train at once. */
  setMaxTrainingThreads(threads) { this._c._GestureCombinations_setMaxTrainingThreads(this._handle(), threads); }

  get recognitionScore() { return this._c._GestureCombinations_recognitionScore(this._handle()); }
}
