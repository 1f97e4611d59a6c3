// A static server for the page, with the headers that make it cross-origin isolated (the
// module's threads share memory, which browsers allow only then). `node server.mjs DIR [PORT]`
// serves DIR; port 0 picks a free one, printed as "listening on PORT".
import { createServer } from 'node:http';
import { readFile } from 'node:fs/promises';
import { extname, join, normalize } from 'node:path';

const types = {
  '.html': 'text/html; charset=utf-8', '.js': 'text/javascript', '.mjs': 'text/javascript',
  '.wasm': 'application/wasm', '.css': 'text/css', '.json': 'application/json', '.png': 'image/png',
  '.dat': 'application/octet-stream',
};

export function serve(root, port = 0) {
  const server = createServer(async (request, response) => {
    const path = normalize(decodeURIComponent(new URL(request.url, 'http://localhost').pathname));
    const file = join(root, path.endsWith('/') ? `${path}index.html` : path);
    const headers = {
      'Cross-Origin-Opener-Policy': 'same-origin',
      'Cross-Origin-Embedder-Policy': 'require-corp',
      'Cross-Origin-Resource-Policy': 'same-origin',
      'Cache-Control': 'no-store',
    };
    try {
      if (!file.startsWith(root)) throw new Error('outside');
      const body = await readFile(file);
      response.writeHead(200, { ...headers, 'Content-Type': types[extname(file)] ?? 'application/octet-stream' });
      response.end(body);
    } catch {
      response.writeHead(404, headers);
      response.end('not found');
    }
  });
  return new Promise((resolve) => server.listen(port, '127.0.0.1', () => resolve(server)));
}

if (import.meta.url === `file://${process.argv[1]}`) {
  const server = await serve(normalize(process.argv[2] ?? '.'), Number(process.argv[3] ?? 8080));
  console.log(`listening on ${server.address().port}`);
}
